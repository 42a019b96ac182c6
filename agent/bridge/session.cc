#include "agent/bridge/session.h"

#include <asio/bind_executor.hpp>
#include <asio/buffer.hpp>
#include <asio/post.hpp>
#include <asio/write.hpp>
#include <utility>

#include "agent/bridge/listener_registry.h"
#include "agent/log.h"
#include "bridge/protocol.h"

namespace agent {
namespace {

/// How long a client may take to go on with what it has begun: a hello, a frame, taking a reply.
constexpr std::chrono::seconds PATIENCE{20};
constexpr std::chrono::seconds CLOCK_TICK{5};

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
  const bool handled = greeted_ ? handleFrame() : handleHello();
  if (!handled) readMore();
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
  std::string reply = answer(std::string_view(input_).substr(bridge::FRAME_HEAD_SIZE, size));
  input_.erase(0, bridge::FRAME_HEAD_SIZE + size);
  write(std::move(reply));
  return true;
}

/// Returns the frame of the reply.
std::string Session::answer(std::string_view frame) {
  const auto request = bridge::decodeRequest(frame);
  bridge::Reply reply;
  if (!request) {
    stopping_ = true;
    reply = failure(bridge::Reason::MalformedFrame, "the frame holds no request");
  } else if (const auto* command = std::get_if<bridge::Command>(&*request)) {
    reply = service_.execute(peer_, *command);
  } else if (std::holds_alternative<bridge::Subscription>(*request)) {
    reply = subscribe();
  } else {
    reply = service_.status();
  }
  if (reply.output.size() > bridge::MAX_REPLY_OUTPUT) {
    reply = failure(
        bridge::Reason::ReplyTooLarge,
        "the output of " + std::to_string(reply.output.size()) + " bytes does not fit a frame");
  }
  return bridge::encode(std::move(reply));
}

bridge::Reply Session::subscribe() {
  if (!subscription_) {
    // Called on other sessions' threads; the event is handled in this one's strand.
    subscription_ = service_.changes().subscribe([weak = weak_from_this()](const auto& event) {
      const auto self = weak.lock();
      if (!self) return;
      asio::post(self->socket_.get_executor(), [self, event] { self->deliver(event); });
    });
  }
  return {.result = 1};
}

void Session::deliver(const bridge::Event& event) {
  if (output_.size() >= MAX_PENDING) {
    log(Level::Warning, "session closed: the client does not take its events",
        {{"uid", peer_.uid}, {"pid", peer_.pid}});
    return end();
  }
  if (ended_) return;
  output_.push_back(bridge::encode(event));
  if (output_.size() == 1) writeNext();
}

/// Writes a reply; what the client sends is looked at again when it has been taken.
void Session::write(std::string bytes) {
  answering_ = true;
  output_.push_back(std::move(bytes));
  if (output_.size() == 1) writeNext();
}

void Session::writeNext() {
  if (ended_) return;
  lastProgress_ = Clock::now();
  asio::async_write(socket_, asio::buffer(output_.front()),
                    [self = shared_from_this()](const asio::error_code& error, size_t /*size*/) {
                      if (error) return self->end();
                      self->lastProgress_ = Clock::now();
                      self->output_.pop_front();
                      if (!self->output_.empty()) return self->writeNext();
                      if (self->stopping_) return self->end();
                      if (std::exchange(self->answering_, false)) self->handleInput();
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
  if (subscription_) service_.changes().unsubscribe(*subscription_);
  if (greeted_) listenerRegistry().sessionClosed(peer_);
  onEnd_();
}

}  // namespace agent
