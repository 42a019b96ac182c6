// Tells those who watch the agent what happens.
#pragma once

#include <cstdint>
#include <functional>
#include <list>
#include <optional>
#include <string>

#include "agent/base/mutex.h"
#include "bridge/notice.h"

namespace agent {

/// Passes notices on to watchers, in the order in which they are published, and counts them. A
/// watcher that a notice cannot be told to is lost: nobody takes a gap for a silence. Thread-safe.
class Events {
 public:
  Events() = default;
  Events(const Events&) = delete;
  Events& operator=(const Events&) = delete;

  /// Both are called on the thread of whoever publishes, with the lock held: they must not wait,
  /// throw or call the events.
  struct Watcher {
    std::function<void(const std::string& frame)> tell;  ///< a notice, as a whole frame
    std::function<void()> lose;
  };
  using Ticket = std::list<Watcher>::iterator;

  /// `begin` is called in the same way, before the watcher is told anything. One that comes while
  /// the agent is degraded is told that first.
  Ticket watch(Watcher watcher, const std::function<void()>& begin);
  void unwatch(Ticket ticket);

  /// Takes the time from the notice. If there is no memory, all watchers are lost.
  void publish(const bridge::Notice& notice) noexcept;

  /// Something has happened that cannot be told for want of memory: all watchers are lost.
  void lose() noexcept;

  /// How many notices there were since the start; refusals also those that were not published.
  struct Counts {
    uint64_t writes = 0;
    uint64_t saves = 0;
    uint64_t failedSaves = 0;
    uint64_t refusals = 0;
    size_t watchers = 0;  ///< now
  };
  Counts counts() const;
  void countRefusal();

  /// Held by a session while a command runs that may change something.
  class Activity {
   public:
    explicit Activity(Events& events) : events_(events) { events_.begin(); }
    ~Activity() { events_.end(); }
    Activity(const Activity&) = delete;
    Activity& operator=(const Activity&) = delete;

   private:
    Events& events_;
  };

  /// Publishes the agent's end as soon as nothing is active. REQUIRES: no activity begins any more.
  void publishEnd() noexcept;

  /// Returns when the end has been published. REQUIRES: it will be.
  void waitForEnd();

 private:
  void begin();
  void end() noexcept;
  void publishLocked(const bridge::Notice& notice) noexcept REQUIRES(mutex_);
  void endIfIdle() noexcept REQUIRES(mutex_);

  mutable Mutex mutex_;
  ConditionVariable endPublished_;
  std::list<Watcher> watchers_ GUARDED_BY(mutex_);
  std::optional<bridge::Notice> degradation_ GUARDED_BY(mutex_);  // how it began, while it lasts
  Counts counts_ GUARDED_BY(mutex_);
  size_t active_ GUARDED_BY(mutex_) = 0;
  bool ending_ GUARDED_BY(mutex_) = false;
  bool ended_ GUARDED_BY(mutex_) = false;
};

}  // namespace agent
