// What is on its way to a client.
#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <optional>
#include <string>

#include "agent/base/mutex.h"

namespace agent {

/// Writes frames to a client's socket in the order in which they are sent, and keeps what the
/// socket does not take. What the socket never will take closes the queue, and with it the
/// connection: neither side waits for what does not come. Thread-safe; nothing but
/// waitUntilWritten() waits for the client. Its lock is the innermost: nobody is called while it is
/// held but `onBacklog`.
class SendQueue {
 public:
  using Clock = std::chrono::steady_clock;

  /// `onBacklog` is called when the socket is full, with the lock held: it sees to it that
  /// writeMore() is called when the socket takes more. REQUIRES: the socket stays open while the
  /// object is used.
  SendQueue(int socket, std::function<void()> onBacklog);

  enum class Outcome {
    Written,
    Pending,   ///< to be written when the client takes more
    Overflow,  ///< the client leaves too much untaken; closed now
    Closed,    ///< now or before
  };
  enum class Kind {
    Reply,  ///< its size is counted elsewhere
    Event,  ///< the client has not asked for this one: not many bytes of them are kept
  };
  /// Throws std::bad_alloc if the rest cannot be kept; closed then, as the client may have a part.
  Outcome send(std::string frame, Kind kind = Kind::Reply);

  /// Writes what the socket takes; `onBacklog` is called again if that is not all.
  void writeMore();

  /// Returns when nothing is left to be written; false if that is because it was closed.
  bool waitUntilWritten();

  /// Drops what is left, and what is sent from now on. Whoever reads from the socket, here or at
  /// the client, finds its end behind what has arrived.
  void close();

  /// Since when the client has taken nothing although there is something; empty if there is not.
  std::optional<Clock::time_point> untakenSince() const;

 private:
  struct Frame {
    std::string bytes;
    Kind kind;
  };

  void closeLocked() REQUIRES(mutex_);
  bool isFullFor(const std::string& frame, Kind kind) const REQUIRES(mutex_);

  const int socket_;
  const std::function<void()> onBacklog_;
  mutable Mutex mutex_;
  ConditionVariable written_;
  std::deque<Frame> frames_ GUARDED_BY(mutex_);
  size_t taken_ GUARDED_BY(mutex_) = 0;       // bytes of the first of them
  size_t eventBytes_ GUARDED_BY(mutex_) = 0;  // of the events among them
  Clock::time_point lastProgress_ GUARDED_BY(mutex_);
  bool closed_ GUARDED_BY(mutex_) = false;
};

}  // namespace agent
