#include "agent/bridge/send_queue.h"

#include <sys/socket.h>

#include <cerrno>
#include <new>
#include <string_view>
#include <utility>

#include "agent/bridge/limits.h"

namespace agent {
namespace {

/// Takes off the front of the bytes what the socket takes at once. False if it takes nothing any
/// more.
bool writeWhatFits(int socket, std::string_view& bytes) {
  while (!bytes.empty()) {
    const ssize_t size = ::send(socket, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    if (size >= 0) {
      bytes.remove_prefix(static_cast<size_t>(size));
    } else if (errno != EINTR) {
      return errno == EAGAIN || errno == EWOULDBLOCK;
    }
  }
  return true;
}

}  // namespace

SendQueue::SendQueue(int socket, std::function<void()> onBacklog)
    : socket_(socket), onBacklog_(std::move(onBacklog)) {}

bool SendQueue::isFullFor(const std::string& frame, Kind kind) const {
  if (frames_.size() >= MAX_PENDING) return true;
  return kind == Kind::Event && frame.size() > MAX_PENDING_EVENTS - eventBytes_;
}

SendQueue::Outcome SendQueue::send(std::string frame, Kind kind) {
  const MutexLock lock(mutex_);
  if (closed_) return Outcome::Closed;
  const bool first = frames_.empty();
  if (first) {
    std::string_view rest = frame;
    if (!writeWhatFits(socket_, rest)) {
      closeLocked();
      return Outcome::Closed;
    }
    if (rest.empty()) return Outcome::Written;
    taken_ = frame.size() - rest.size();
  } else if (isFullFor(frame, kind)) {
    closeLocked();
    return Outcome::Overflow;
  }
  try {
    const size_t size = frame.size();
    frames_.push_back({std::move(frame), kind});
    if (kind == Kind::Event) eventBytes_ += size;
  } catch (const std::bad_alloc&) {
    closeLocked();
    throw;
  }
  if (first) {
    lastProgress_ = Clock::now();
    onBacklog_();
  }
  return Outcome::Pending;
}

void SendQueue::writeMore() {
  const MutexLock lock(mutex_);
  while (!frames_.empty()) {
    std::string_view rest = std::string_view(frames_.front().bytes).substr(taken_);
    const size_t before = rest.size();
    if (!writeWhatFits(socket_, rest)) return closeLocked();
    if (rest.size() < before) lastProgress_ = Clock::now();
    if (!rest.empty()) {
      taken_ = frames_.front().bytes.size() - rest.size();
      return onBacklog_();
    }
    if (frames_.front().kind == Kind::Event) eventBytes_ -= frames_.front().bytes.size();
    frames_.pop_front();
    taken_ = 0;
  }
  written_.notifyAll();
}

bool SendQueue::waitUntilWritten() {
  const MutexLock lock(mutex_);
  while (!frames_.empty()) written_.wait(mutex_);
  return !closed_;
}

void SendQueue::close() {
  const MutexLock lock(mutex_);
  closeLocked();
}

void SendQueue::closeLocked() {
  closed_ = true;
  (void)::shutdown(socket_, SHUT_RDWR);
  frames_.clear();
  eventBytes_ = 0;
  written_.notifyAll();
}

std::optional<SendQueue::Clock::time_point> SendQueue::untakenSince() const {
  const MutexLock lock(mutex_);
  if (frames_.empty()) return std::nullopt;
  return lastProgress_;
}

}  // namespace agent
