#include "agent/session.h"

#include <asio/bind_executor.hpp>
#include <asio/buffer.hpp>
#include <asio/post.hpp>
#include <asio/write.hpp>
#include <utility>

#include "agent/listener_registry.h"
#include "agent/log.h"
#include "bridge/protocol.h"

namespace agent {
namespace {

/// How long a client may take to go on with what it has begun: a hello, a frame, taking a reply.
constexpr std::chrono::seconds PATIENCE{20};
constexpr std::chrono::seconds CLOCK_TICK{5};

bridge::Reply failure(bridge::Reason reason, std::string text) {
  return {0, reason, std::move(text), {}};
}

bridge::Reply runCommand(BridgeSession& session, const bridge::Command& command) {
  using Outcome = ListenerRegistry::Outcome;
  using bridge::Reason;

  session.refusal.clear();
  bridge::Reply reply;
  auto result = listenerRegistry().execute(session, static_cast<ModuleIdType>(command.module),
                                           command.command, command.input, reply.output);
  switch (result.outcome) {
    case Outcome::Succeeded:
      reply.result = result.value;
      return reply;
    case Outcome::Refused:
      if (!session.refusal.empty()) return failure(Reason::NotAuthorised, session.refusal);
      return failure(Reason::ModuleRefused,
                     "the module does not know this command or its subject, "
                     "or could not carry it out");
    case Outcome::MalformedInput:
      return failure(Reason::MalformedInput,
                     "the module could not read the command to its end: " + result.error);
    case Outcome::Failed:
      return failure(Reason::ModuleFailed, "the module failed: " + result.error);
    case Outcome::NoSuchModule:
      break;
  }
  return failure(Reason::NoSuchModule,
                 "no module " + std::to_string(command.module) + " is loaded");
}

}  // namespace

Session::Session(Socket socket, BridgeSession peer, std::function<void()> onEnd)
    : socket_(std::move(socket)),
      timer_(socket_.get_executor()),
      peer_(std::move(peer)),
      onEnd_(std::move(onEnd)),
      lastProgress_(Clock::now()) {}

void Session::start() {
  asio::post(socket_.get_executor(), [self = shared_from_this()] {
    self->watchClock();
    self->readMore();
  });
}

void Session::stop() {
  asio::post(socket_.get_executor(), [self = shared_from_this()] { self->endAfterWriting(); });
}

void Session::readMore() {
  if (ended_) return;
  socket_.async_read_some(asio::buffer(chunk_),
                          [self = shared_from_this()](const asio::error_code& error, size_t size) {
                            if (error) return self->end();
                            if (self->input_.empty()) self->lastProgress_ = Clock::now();
                            self->input_.append(self->chunk_.data(), size);
                            self->handleInput();
                          });
}

/// Handles what has arrived; returns to reading, unless a reply has to be written first.
void Session::handleInput() {
  const bool complete = greeted_ ? handleFrame() : handleHello();
  if (!complete) readMore();
}

/// Each handler returns false if the bytes are not all there yet.

bool Session::handleHello() {
  if (input_.size() < bridge::HELLO_SIZE) return false;
  uint32_t version = 0;
  if (!bridge::decodeHello(input_, version)) {
    log(Level::Warning, "session closed: the client does not speak the bridge protocol",
        {{"uid", peer_.uid}, {"pid", peer_.pid}});
    end();
    return true;
  }
  input_.erase(0, bridge::HELLO_SIZE);
  greeted_ = version == bridge::PROTOCOL_VERSION;
  if (greeted_) {
    listenerRegistry().sessionOpened(peer_);
  } else {
    stopping_ = true;  // the answer tells the client which version would be right
  }
  write(bridge::encodeHello());
  return true;
}

bool Session::handleFrame() {
  if (input_.size() < bridge::FRAME_HEAD_SIZE) return false;
  const uint32_t size = bridge::decodeFrameHead(input_);
  if (size > bridge::MAX_FRAME_SIZE) {
    stopping_ = true;
    write(bridge::encode(
        failure(bridge::Reason::MalformedFrame, "a frame of " + std::to_string(size) +
                                                    " bytes is over the limit of " +
                                                    std::to_string(bridge::MAX_FRAME_SIZE))));
    return true;
  }
  if (input_.size() - bridge::FRAME_HEAD_SIZE < size) return false;
  std::string reply = execute(std::string_view(input_).substr(bridge::FRAME_HEAD_SIZE, size));
  input_.erase(0, bridge::FRAME_HEAD_SIZE + size);
  write(std::move(reply));
  return true;
}

/// Returns the frame of the reply.
std::string Session::execute(std::string_view frame) {
  bridge::Command command;
  bridge::Reply reply;
  if (bridge::decode(frame, command)) {
    reply = runCommand(peer_, command);
    if (reply.output.size() > bridge::MAX_REPLY_OUTPUT) {
      reply = failure(
          bridge::Reason::ReplyTooLarge,
          "the reply of " + std::to_string(reply.output.size()) + " bytes does not fit a frame");
    }
  } else {
    stopping_ = true;
    reply = failure(bridge::Reason::MalformedFrame, "the frame holds no command");
  }
  return bridge::encode(reply);
}

void Session::write(std::string bytes) {
  if (ended_) return;
  output_ = std::move(bytes);
  lastProgress_ = Clock::now();
  asio::async_write(socket_, asio::buffer(output_),
                    [self = shared_from_this()](const asio::error_code& error, size_t /*size*/) {
                      self->output_.clear();
                      self->lastProgress_ = Clock::now();
                      if (error || self->stopping_) return self->end();
                      self->handleInput();
                    });
}

void Session::endAfterWriting() {
  stopping_ = true;
  if (output_.empty()) end();
}

void Session::watchClock() {
  timer_.expires_after(CLOCK_TICK);
  timer_.async_wait([self = shared_from_this()](const asio::error_code& error) {
    if (error || self->ended_) return;
    const bool owesSomething = !self->greeted_ || !self->input_.empty() || !self->output_.empty();
    if (owesSomething && Clock::now() - self->lastProgress_ > PATIENCE) {
      log(Level::Warning, "session closed: the client does not go on with what it has begun",
          {{"uid", self->peer_.uid}, {"pid", self->peer_.pid}});
      return self->end();
    }
    self->watchClock();
  });
}

void Session::end() {
  if (std::exchange(ended_, true)) return;
  asio::error_code ignored;
  socket_.close(ignored);
  timer_.cancel();
  if (greeted_) listenerRegistry().sessionClosed(peer_);
  onEnd_();
}

}  // namespace agent
