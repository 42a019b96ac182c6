#include "agent/bridge/session.h"

#include <asio/buffer.hpp>
#include <asio/executor_work_guard.hpp>
#include <asio/post.hpp>
#include <utility>
#include <variant>

#include "agent/bridge/listener_registry.h"
#include "agent/log.h"
#include "bridge/protocol.h"

namespace agent {
namespace {

/// How long a client may take to go on with what it has begun: a hello, a frame, taking a reply.
constexpr std::chrono::seconds PATIENCE{20};
constexpr std::chrono::seconds CLOCK_TICK{5};

/// The same when the agent stops. With the tick it is less than what a running command gets: a
/// client that takes nothing must not keep the agent from ending well.
constexpr std::chrono::seconds PATIENCE_AT_END{5};

/// A subscriber that leaves more events than this untaken is closed.
constexpr size_t MAX_PENDING = 1000;

bridge::Reply failure(bridge::Reason reason, std::string text) {
  return {0, reason, std::move(text)};
}

}  // namespace

Session::Session(Socket socket, BridgeSession peer, CommandService& service,
                 std::function<void()> onEnd)
    : socket_(std::move(socket)),
      timer_(socket_.get_executor()),
      peer_(std::move(peer)),
      service_(service),
      onEnd_(std::move(onEnd)),
      lastProgress_(Clock::now()) {
  socket_.non_blocking(true);
}

void Session::start() {
  watchClock();
  readMore();
}

void Session::stop() {
  stopping_ = true;
  endIfStopped();
}

void Session::readMore() {
  if (ended_ || std::exchange(reading_, true)) return;
  socket_.async_read_some(asio::buffer(chunk_),
                          [self = shared_from_this()](const asio::error_code& error, size_t size) {
                            self->reading_ = false;
                            if (error) return self->end();
                            if (self->input_.empty()) self->lastProgress_ = Clock::now();
                            self->input_.append(self->chunk_.data(), size);
                            self->handleInput();
                          });
}

/// Handles what has arrived, as far as it is complete. A client that does not take its replies, or
/// whose command runs, is not read from.
void Session::handleInput() {
  while (!ended_ && !stopping_ && !busy()) {
    if (greeted_ ? handleFrame() : handleHello()) {
      begun_ = false;
      continue;
    }
    if (!input_.empty() && !std::exchange(begun_, true)) lastProgress_ = Clock::now();
    return readMore();
  }
}

// Each handler returns false if the bytes are not all there yet.

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
  send(bridge::encodeHello());
  return true;
}

bool Session::handleFrame() {
  if (input_.size() < bridge::FRAME_HEAD_SIZE) return false;
  const uint32_t size = bridge::decodeFrameHead(input_);
  if (size > bridge::MAX_FRAME_SIZE) {
    stopping_ = true;
    send(failure(bridge::Reason::MalformedFrame, "a frame of " + std::to_string(size) +
                                                     " bytes is over the limit of " +
                                                     std::to_string(bridge::MAX_FRAME_SIZE)));
    return true;
  }
  if (input_.size() - bridge::FRAME_HEAD_SIZE < size) return false;
  auto request =
      bridge::decodeRequest(std::string_view(input_).substr(bridge::FRAME_HEAD_SIZE, size));
  input_.erase(0, bridge::FRAME_HEAD_SIZE + size);
  if (request) {
    handleRequest(std::move(*request));
  } else {
    stopping_ = true;
    send(failure(bridge::Reason::MalformedFrame, "the frame holds no request"));
  }
  return true;
}

void Session::handleRequest(bridge::Request request) {
  if (auto* command = std::get_if<bridge::Command>(&request)) {
    if (!CommandService::isQuick(*command)) return runOnWorker(std::move(*command));
    send(service_.execute(peer_, *command));
  } else if (std::holds_alternative<bridge::Subscription>(request)) {
    send(subscribe());
  } else {
    send(service_.status());
  }
}

void Session::runOnWorker(bridge::Command command) {
  running_ = true;
  asio::post(service_.workers(), [self = shared_from_this(), command = std::move(command),
                                  work = asio::make_work_guard(socket_.get_executor())] {
    asio::post(work.get_executor(),
               [self, reply = self->service_.execute(self->peer_, command)]() mutable {
                 self->running_ = false;
                 if (self->ended_) return self->leave();
                 self->send(std::move(reply));
                 self->handleInput();
               });
  });
}

bridge::Reply Session::subscribe() {
  if (!subscription_) {
    // Called on the thread of whoever has written.
    subscription_ = service_.changes().subscribe([weak = weak_from_this()](const auto& event) {
      const auto self = weak.lock();
      if (!self) return;
      asio::post(self->socket_.get_executor(),
                 [self, event] { self->send(bridge::encode(event)); });
    });
  }
  return {1};
}

void Session::send(bridge::Reply reply) {
  if (reply.output.size() > bridge::MAX_REPLY_OUTPUT) {
    reply = failure(
        bridge::Reason::ReplyTooLarge,
        "the output of " + std::to_string(reply.output.size()) + " bytes does not fit a frame");
  }
  send(bridge::encode(std::move(reply)));
}

void Session::send(std::string frame) {
  if (ended_) return;
  if (output_.size() >= MAX_PENDING) {
    log(Level::Warning, "session closed: the client does not take its events",
        {{"uid", peer_.uid}, {"pid", peer_.pid}});
    return end();
  }
  output_.push_back(std::move(frame));
  flush();
}

/// Writes what the socket takes at once, and comes back when it takes more.
void Session::flush() {
  if (ended_ || waitingToWrite_) return;
  while (!output_.empty()) {
    asio::error_code error;
    written_ += socket_.write_some(asio::buffer(output_.front()) + written_, error);
    if (error == asio::error::would_block) {
      waitingToWrite_ = true;
      lastProgress_ = Clock::now();
      return socket_.async_wait(Socket::wait_write,
                                [self = shared_from_this()](const asio::error_code& failed) {
                                  self->waitingToWrite_ = false;
                                  if (failed) return self->end();
                                  self->flush();
                                  self->handleInput();
                                });
    }
    if (error) return end();
    if (written_ == output_.front().size()) {
      output_.pop_front();
      written_ = 0;
    }
  }
  endIfStopped();
}

void Session::endIfStopped() {
  if (stopping_ && !busy()) end();
}

void Session::watchClock() {
  timer_.expires_after(CLOCK_TICK);
  timer_.async_wait([self = shared_from_this()](const asio::error_code& error) {
    if (error || self->ended_) return;
    const bool clientsTurn = !self->greeted_ || !self->input_.empty() || !self->output_.empty();
    const auto patience = self->stopping_ ? PATIENCE_AT_END : PATIENCE;
    if (clientsTurn && !self->running_ && Clock::now() - self->lastProgress_ > patience) {
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
  if (!running_) leave();  // else when the command is done
}

void Session::leave() {
  if (subscription_) service_.changes().unsubscribe(*subscription_);
  if (greeted_) listenerRegistry().sessionClosed(peer_);
  onEnd_();
}

}  // namespace agent
