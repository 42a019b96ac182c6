#include "agent/bridge/client_connection.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <asio/executor_work_guard.hpp>
#include <asio/post.hpp>
#include <cerrno>
#include <exception>
#include <new>
#include <system_error>
#include <utility>
#include <variant>

#include "agent/base/log.h"
#include "agent/bridge/command_log.h"
#include "agent/bridge/limits.h"
#include "agent/bridge/listener_registry.h"
#include "bridge/protocol.h"

namespace agent {
ClientConnection::ClientConnection(asio::io_context& io, int socket, BridgeSession peer,
                                   CommandService& service, Quota& memory,
                                   std::function<void()> onEnd)
    : io_(io),
      socket_(socket),
      timer_(io),
      writable_(io),
      peer_(std::move(peer)),
      service_(service),
      onEnd_(std::move(onEnd)),
      sendQueue_(socket,
                 [this] {
                   asio::post(io_, inMemory(backlogMemory_, [self = shared_from_this()] {
                                self->waitUntilWritable();
                              }));
                 }),
      frameBytes_(memory, peer_.uid),
      replyBytes_(memory, peer_.uid),
      waitingSince_(Clock::now().time_since_epoch().count()) {
  peer_.replyBytes = &replyBytes_;
}

ClientConnection::~ClientConnection() { (void)::close(socket_); }

void ClientConnection::start() {
  watchClock();
  try {
    thread_ = std::thread([self = shared_from_this(), work = asio::make_work_guard(io_)] {
      self->run();
      asio::post(work.get_executor(), inMemory(self->endMemory_, [self] { self->finish(); }));
    });
  } catch (...) {
    ended_ = true;
    timer_.cancel();
    throw;
  }
}

void ClientConnection::stop() {
  // While a command runs, the connection's thread sees the new state when it has answered it.
  if (state_.exchange(State::Stopping) == State::Waiting) (void)::shutdown(socket_, SHUT_RD);
}

void ClientConnection::waitUntilWritable() {
  try {
    // A duplicate, so that requests that arrive on the socket wake only the connection's thread.
    const int duplicate = ::fcntl(socket_, F_DUPFD_CLOEXEC, 0);
    if (duplicate < 0) throw std::system_error(errno, std::generic_category());
    try {
      writable_.assign(duplicate);
    } catch (...) {
      (void)::close(duplicate);
      throw;
    }
    writable_.async_wait(
        asio::posix::descriptor_base::wait_write,
        inMemory(backlogMemory_, [self = shared_from_this()](const asio::error_code& /*ended*/) {
          asio::error_code ignored;
          (void)self->writable_.close(ignored);
          self->sendQueue_.writeMore();
        }));
  } catch (const std::exception& failed) {
    logOften(Level::Error, "session closed: its client cannot be waited for",
             {{"reason", failed.what()},
              {"uid", peer_.uid},
              {"pid", peer_.pid},
              {"program", peer_.program}});
    sendQueue_.close();
  }
}

void ClientConnection::watchClock() {
  timer_.expires_after(CLOCK_TICK);
  timer_.async_wait(inMemory(clockMemory_, [self = shared_from_this()](
                                               const asio::error_code& /*cancelled*/) {
    if (self->ended_) return;
    if (self->isOverdue()) {
      logOften(
          Level::Warning, "session closed: the client does not go on with what it has begun",
          {{"uid", self->peer_.uid}, {"pid", self->peer_.pid}, {"program", self->peer_.program}});
      self->sendQueue_.close();
    }
    self->watchClock();
  }));
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
  bool opened = false;
  try {
    if (handleHello()) {
      listenerRegistry().sessionOpened(peer_);
      opened = true;
      serve();
    }
  } catch (const std::exception& failed) {
    logOften(Level::Error, "session closed: its request cannot be handled",
             {{"reason", failed.what()},
              {"uid", peer_.uid},
              {"pid", peer_.pid},
              {"program", peer_.program}});
    if (opened) tellOfFailure();
  }
  activity_.reset();
  if (watch_ && state_ == State::Stopping) service_.events().waitForEnd();
  if (watch_) service_.events().unwatch(*watch_);
  if (subscription_) service_.changes().unsubscribe(*subscription_);
  if (opened) listenerRegistry().sessionClosed(peer_);
  (void)sendQueue_.waitUntilWritten();
}

/// The last reply, if there is memory for so much.
void ClientConnection::tellOfFailure() noexcept try {
  (void)post(bridge::encode(bridge::failure(
      bridge::Reason::Busy, "there is no memory for the request or its reply; try again")));
} catch (const std::bad_alloc&) {
  // The client sees the end of the session.
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
    activity_.emplace(service_.events());  // before the state says so: nothing runs behind the end
    if (!state_.compare_exchange_strong(state, State::Running)) return;
    if (!handleFrame()) return;
    activity_.reset();
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
    if (!refused_) makeRoom();
    if (refused_ && !input_.isSkipping()) break;
  }
  if (waiting) waitingSince_ = NOTHING;
  return true;
}

/// Has the next frame counted as soon as its size is known. If there is no room for it, it is
/// dropped as it comes.
void ClientConnection::makeRoom() {
  const auto size = input_.announcedSize();
  if (!size || input_.oversize() || counted_) return;
  counted_ = frameBytes_.resize(*size);
  refused_ = !counted_;
  if (refused_) return input_.skipFrame();
  input_.reserveFrame();
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
  if (std::exchange(refused_, false)) return sendRefusal(CommandService::busy(peer_));
  if (const auto size = input_.oversize()) {
    return refuseFrame("a frame of " + std::to_string(*size) + " bytes is over the limit of " +
                       std::to_string(bridge::MAX_FRAME_SIZE));
  }
  auto request = bridge::decodeRequest(*input_.takeFrame());
  counted_ = false;
  if (!request) return refuseFrame("the frame holds no request");
  if (std::holds_alternative<bridge::Subscription>(*request)) return subscribe();
  const auto* const ofAgent = std::get_if<bridge::AgentCommand>(&*request);
  if (ofAgent != nullptr && ofAgent->name == bridge::WATCH) return watch();
  bridge::Reply reply = execute(*request);
  request.reset();  // whatever the client does with the reply
  (void)frameBytes_.resize(0);
  return send(std::move(reply));
}

/// The session ends with it: false.
bool ClientConnection::refuseFrame(std::string reason) {
  (void)sendRefusal(bridge::failure(bridge::Reason::MalformedFrame, std::move(reason)));
  return false;
}

bool ClientConnection::sendRefusal(bridge::Reply reply) {
  logRefusal(peer_, reply);
  return send(std::move(reply));
}

bridge::Reply ClientConnection::execute(const bridge::Request& request) {
  if (const auto* command = std::get_if<bridge::Command>(&request)) {
    return service_.execute(peer_, *command);
  }
  if (const auto* command = std::get_if<bridge::AgentCommand>(&request)) {
    return service_.execute(peer_, *command);
  }
  return service_.status(peer_);
}

bool ClientConnection::subscribe() {
  const bridge::Reply done{1};
  if (subscription_) return send(done);
  SendQueue::Outcome outcome{};
  subscription_ = service_.changes().subscribe(
      [this](const bridge::Event& event) { postEvent([&] { return bridge::encode(event); }); },
      [&] { outcome = post(bridge::encode(done)); });
  return settle(outcome);
}

bool ClientConnection::watch() {
  const bridge::Reply done{1};
  if (watch_) return send(done);
  SendQueue::Outcome outcome{};
  watch_ = service_.events().watch(
      {.tell = [this](const std::string& frame) { postEvent([&] { return frame; }); },
       .lose = [this] { sendQueue_.close(); }},
      [&] { outcome = post(bridge::encode(done)); });
  return settle(outcome);
}

bool ClientConnection::send(bridge::Reply reply) {
  const size_t size = reply.output.size();
  if (size > bridge::MAX_REPLY_OUTPUT) {
    return sendRefusal(
        bridge::failure(bridge::Reason::ReplyTooLarge,
                        "the output of " + std::to_string(size) + " bytes does not fit a frame"));
  }
  if (!replyBytes_.resize(size)) return sendRefusal(CommandService::busy(peer_));
  std::string frame = bridge::encode(std::exchange(reply, {}));
  const bool taken = settle(post(std::move(frame)));
  (void)replyBytes_.resize(0);
  return taken;
}

/// A client that does not take its replies is not read from. False if it never will take this one.
bool ClientConnection::settle(SendQueue::Outcome outcome) {
  activity_.reset();  // the command is done, however long its client takes
  if (outcome == SendQueue::Outcome::Pending) return sendQueue_.waitUntilWritten();
  return outcome == SendQueue::Outcome::Written;
}

/// For replies and, on the thread of whoever has written, for events. Does not wait.
SendQueue::Outcome ClientConnection::post(std::string frame, SendQueue::Kind kind) {
  SendQueue::Outcome outcome = SendQueue::Outcome::Closed;
  try {
    outcome = sendQueue_.send(std::move(frame), kind);
  } catch (const std::bad_alloc&) {
    logOften(Level::Error, "session closed: no memory for what its client does not take",
             {{"uid", peer_.uid}, {"pid", peer_.pid}, {"program", peer_.program}});
  }
  if (outcome == SendQueue::Outcome::Overflow) {
    logOften(Level::Warning, "session closed: the client does not take its events",
             {{"uid", peer_.uid}, {"pid", peer_.pid}, {"program", peer_.program}});
  }
  return outcome;
}

/// The writer is not to suffer for a subscriber.
void ClientConnection::postEvent(const std::function<std::string()>& frame) noexcept try {
  (void)post(frame(), SendQueue::Kind::Event);
} catch (const std::bad_alloc&) {
  sendQueue_.close();
}

}  // namespace agent
