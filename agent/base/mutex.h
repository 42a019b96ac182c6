// Locks that the compiler checks. Clang's thread-safety analysis, a part of the lint, reports every
// use of what is GUARDED_BY a mutex without that mutex; other compilers read no annotations.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

#ifdef __clang__
#define THREAD_ANNOTATION(attribute) __attribute__((attribute))
#else
#define THREAD_ANNOTATION(attribute)
#endif

/// Of a member: it is used only while the mutex is held.
#define GUARDED_BY(mutex) THREAD_ANNOTATION(guarded_by(mutex))

/// Of a function: its callers hold the mutex.
#define REQUIRES(mutex) THREAD_ANNOTATION(requires_capability(mutex))

/// Of a function: its callers do not hold the mutex.
#define EXCLUDES(mutex) THREAD_ANNOTATION(locks_excluded(mutex))

namespace agent {

/// A std::mutex.
class THREAD_ANNOTATION(capability("mutex")) Mutex {
 public:
  void lock() THREAD_ANNOTATION(acquire_capability()) { mutex_.lock(); }
  void unlock() THREAD_ANNOTATION(release_capability()) { mutex_.unlock(); }

 private:
  friend class ConditionVariable;

  std::mutex mutex_;
};

/// Holds a mutex to the end of its scope, but between unlock() and lock().
class THREAD_ANNOTATION(scoped_lockable) MutexLock {
 public:
  explicit MutexLock(Mutex& mutex) THREAD_ANNOTATION(acquire_capability(mutex)) : lock_(mutex) {}
  ~MutexLock() THREAD_ANNOTATION(release_capability()) = default;

  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;

  void lock() THREAD_ANNOTATION(acquire_capability()) { lock_.lock(); }
  void unlock() THREAD_ANNOTATION(release_capability()) { lock_.unlock(); }

 private:
  std::unique_lock<Mutex> lock_;
};

/// A std::condition_variable. It wakes up for no reason at times: wait in a loop, with the
/// condition as the loop's, where the analysis sees that the mutex is held.
class ConditionVariable {
 public:
  /// Gives the mutex away while it waits.
  void wait(Mutex& mutex) REQUIRES(mutex) {
    std::unique_lock lock(mutex.mutex_, std::adopt_lock);
    condition_.wait(lock);
    (void)lock.release();
  }

  /// The same, at the longest to that time.
  void waitUntil(Mutex& mutex, std::chrono::steady_clock::time_point time) REQUIRES(mutex) {
    std::unique_lock lock(mutex.mutex_, std::adopt_lock);
    (void)condition_.wait_until(lock, time);
    (void)lock.release();
  }

  void notifyAll() { condition_.notify_all(); }

 private:
  std::condition_variable condition_;
};

}  // namespace agent
