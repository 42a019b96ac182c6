#include "agent/bridge/client_connection.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <asio/executor_work_guard.hpp>
#include <asio/post.hpp>
#include <cerrno>
#include <exception>
#include <string_view>
#include <utility>
#include <variant>

#include "agent/base/log.h"
#include "agent/bridge/command_log.h"
#include "agent/bridge/listener_registry.h"
#include "bridge/protocol.h"

namespace agent {
namespace {

/// A client is disconnected if it takes longer than this to send its hello, to send the rest of a
/// frame that it has begun, or to take more of what the agent sends.
constexpr std::chrono::seconds CLIENT_TIMEOUT{20};
constexpr std::chrono::seconds CLOCK_TICK{5};

/// The same while the agent stops. With the tick this is less than a running command gets, so that
/// a client that takes nothing cannot make the stop fail.
constexpr std::chrono::seconds CLIENT_TIMEOUT_AT_STOP{5};

}  // namespace

ClientConnection::ClientConnection(asio::io_context& io, int socket, BridgeSession peer,
                                   CommandService& service, std::function<void()> onEnd)
    : io_(io),
      socket_(socket),
      timer_(io),
      writable_(io),
      peer_(std::move(peer)),
      service_(service),
      onEnd_(std::move(onEnd)),
      sendQueue_(
          socket,
          [this] { asio::post(io_, [self = shared_from_this()] { self->waitUntilWritable(); }); }),
      waitingSince_(Clock::now().time_since_epoch().count()) {}

ClientConnection::~ClientConnection() { (void)::close(socket_); }

void ClientConnection::start() {
  thread_ = std::thread([self = shared_from_this(), work = asio::make_work_guard(io_)] {
    self->run();
    asio::post(work.get_executor(), [self] { self->finish(); });
  });
  watchClock();
}

void ClientConnection::stop() {
  // While a command runs, the connection's thread sees the new state when it has answered it.
  if (state_.exchange(State::Stopping) == State::Waiting) (void)::shutdown(socket_, SHUT_RD);
}

void ClientConnection::waitUntilWritable() {
  // A duplicate, so that requests that arrive on the socket wake only the connection's thread.
  const int duplicate = ::fcntl(socket_, F_DUPFD_CLOEXEC, 0);
  asio::error_code failed;
  if (duplicate < 0) {
    failed.assign(errno, asio::error::get_system_category());
  } else {
    (void)writable_.assign(duplicate, failed);
    if (failed) (void)::close(duplicate);
  }
  if (failed) {
    logOften(Level::Error, "session closed: its client cannot be waited for",
             {{"reason", failed.message()},
              {"uid", peer_.uid},
              {"pid", peer_.pid},
              {"program", peer_.program}});
    return interrupt();
  }
  writable_.async_wait(asio::posix::descriptor_base::wait_write,
                       [self = shared_from_this()](const asio::error_code& /*ended*/) {
                         asio::error_code ignored;
                         (void)self->writable_.close(ignored);
                         self->sendQueue_.writeMore();
                       });
}

void ClientConnection::watchClock() {
  timer_.expires_after(CLOCK_TICK);
  timer_.async_wait([self = shared_from_this()](const asio::error_code& /*cancelled*/) {
    if (self->ended_) return;
    if (self->isOverdue()) {
      logOften(
          Level::Warning, "session closed: the client does not go on with what it has begun",
          {{"uid", self->peer_.uid}, {"pid", self->peer_.pid}, {"program", self->peer_.program}});
      self->interrupt();
    }
    self->watchClock();
  });
}

bool ClientConnection::isOverdue() const {
  const auto latest =
      Clock::now() - (state_ == State::Stopping ? CLIENT_TIMEOUT_AT_STOP : CLIENT_TIMEOUT);
  const Clock::rep waitingSince = waitingSince_;
  const auto untakenSince = sendQueue_.untakenSince();
  return (waitingSince != NOTHING && Clock::time_point(Clock::duration(waitingSince)) < latest) ||
         (untakenSince && *untakenSince < latest);
}

void ClientConnection::finish() {
  ended_ = true;
  thread_.join();
  timer_.cancel();
  asio::error_code ignored;
  (void)writable_.close(ignored);
  onEnd_();
}

void ClientConnection::run() {
  bool greeted = false;
  try {
    greeted = handleHello();
    if (greeted) {
      listenerRegistry().sessionOpened(peer_);
      serve();
    }
  } catch (const std::exception& failed) {
    logOften(Level::Error, "session closed: its request cannot be handled",
             {{"reason", failed.what()},
              {"uid", peer_.uid},
              {"pid", peer_.pid},
              {"program", peer_.program}});
  }
  if (subscription_) service_.changes().unsubscribe(*subscription_);
  if (greeted) listenerRegistry().sessionClosed(peer_);
  (void)sendQueue_.waitUntilWritten();
}

/// False if the session ends with it.
bool ClientConnection::handleHello() {
  std::optional<std::string> hello;
  while (!(hello = input_.takeHello())) {
    if (!readMore()) return false;
  }
  uint32_t version = 0;
  if (!bridge::decodeHello(*hello, version)) {
    logOften(Level::Warning, "session closed: the client does not speak the bridge protocol",
             {{"uid", peer_.uid}, {"pid", peer_.pid}, {"program", peer_.program}});
    return false;
  }
  waitingSince_ = NOTHING;
  (void)post(bridge::encodeHello());  // tells the client of another version which would be right
  return version == bridge::PROTOCOL_VERSION;
}

void ClientConnection::serve() {
  while (awaitFrame()) {
    State state = State::Waiting;
    if (!state_.compare_exchange_strong(state, State::Running)) return;
    if (!handleFrame()) return;
    state = State::Running;
    if (!state_.compare_exchange_strong(state, State::Waiting)) return;
  }
}

/// False if the client sends no more.
bool ClientConnection::awaitFrame() {
  bool waiting = false;
  while (!input_.holdsFrame() && !input_.oversize()) {
    if (!input_.empty() && !std::exchange(waiting, true)) {
      waitingSince_ = Clock::now().time_since_epoch().count();
    }
    if (!readMore()) return false;
  }
  if (waiting) waitingSince_ = NOTHING;
  return true;
}

bool ClientConnection::readMore() {
  for (;;) {
    const ssize_t size = ::recv(socket_, chunk_.data(), chunk_.size(), 0);
    if (size > 0) {
      input_.append({chunk_.data(), static_cast<size_t>(size)});
      return true;
    }
    if (size < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
      // waitUntilWritable() has made it a socket that does not block.
      pollfd readable{socket_, POLLIN, 0};
      (void)::poll(&readable, 1, -1);
    } else if (size == 0 || errno != EINTR) {
      return false;
    }
  }
}

/// False if the session ends with its reply.
bool ClientConnection::handleFrame() {
  if (const auto size = input_.oversize()) {
    return refuseFrame("a frame of " + std::to_string(*size) + " bytes is over the limit of " +
                       std::to_string(bridge::MAX_FRAME_SIZE));
  }
  const auto request = bridge::decodeRequest(*input_.takeFrame());
  if (!request) return refuseFrame("the frame holds no request");
  return handleRequest(*request);
}

/// The session ends with it: false.
bool ClientConnection::refuseFrame(std::string reason) {
  const bridge::Reply reply = bridge::failure(bridge::Reason::MalformedFrame, std::move(reason));
  logRefusal(peer_, reply);
  (void)send(reply);
  return false;
}

bool ClientConnection::handleRequest(const bridge::Request& request) {
  if (const auto* command = std::get_if<bridge::Command>(&request)) {
    return send(service_.execute(peer_, *command));
  }
  if (const auto* command = std::get_if<bridge::AgentCommand>(&request)) {
    return send(service_.execute(peer_, *command));
  }
  if (std::holds_alternative<bridge::Subscription>(request)) return subscribe();
  return send(service_.status());
}

bool ClientConnection::subscribe() {
  const bridge::Reply done{1};
  if (subscription_) return send(done);
  SendQueue::Outcome outcome{};
  subscription_ = service_.changes().subscribe(
      [this](const bridge::Event& event) { (void)post(bridge::encode(event)); },
      [&] { outcome = post(bridge::encode(done)); });
  return settle(outcome);
}

bool ClientConnection::send(const bridge::Reply& reply) {
  if (reply.output.size() > bridge::MAX_REPLY_OUTPUT) {
    const bridge::Reply instead = bridge::failure(
        bridge::Reason::ReplyTooLarge,
        "the output of " + std::to_string(reply.output.size()) + " bytes does not fit a frame");
    logRefusal(peer_, instead);
    return send(instead);
  }
  return settle(post(bridge::encode(reply)));
}

/// A client that does not take its replies is not read from. False if it never will take this one.
bool ClientConnection::settle(SendQueue::Outcome outcome) {
  if (outcome == SendQueue::Outcome::Pending) return sendQueue_.waitUntilWritten();
  return outcome == SendQueue::Outcome::Written;
}

/// For replies and, on the thread of whoever has written, for events. Does not wait.
SendQueue::Outcome ClientConnection::post(std::string_view frame) {
  const SendQueue::Outcome outcome = sendQueue_.send(frame);
  if (outcome == SendQueue::Outcome::Overflow) {
    logOften(Level::Warning, "session closed: the client does not take its events",
             {{"uid", peer_.uid}, {"pid", peer_.pid}, {"program", peer_.program}});
    interrupt();
  }
  return outcome;
}

/// Ends whatever the connection's thread waits for from the client.
void ClientConnection::interrupt() {
  sendQueue_.close();
  (void)::shutdown(socket_, SHUT_RDWR);
}

}  // namespace agent
