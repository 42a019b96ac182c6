// Whether an operation waits for a lock.
#pragma once

#include <pthread.h>

#include <atomic>
#include <thread>

#include "agent/base/mutex.h"
#include "tests/support/mutex_of.h"

namespace testing_support {

inline pthread_mutex_t& mutexOf(agent::Mutex& mutex) {
  static_assert(sizeof mutex == sizeof(pthread_mutex_t), "a std::mutex is one of these");
  return reinterpret_cast<pthread_mutex_t&>(mutex);
}

/// Whether a thread waits for the mutex, which another one holds.
inline bool isAwaited(pthread_mutex_t& mutex) {
  constexpr int AWAITED = 2;  // glibc, nptl/lowlevellock.h
  return std::atomic_ref(mutex.__data.__lock) == AWAITED;
}

/// Runs the operation on a thread of its own while this one holds the lock, and to its end when it
/// does not any more; `meanwhile` runs here while the operation waits.
template <typename Lockable, typename Operation, typename Meanwhile>
bool waitsFor(Lockable& lock, Operation operation, Meanwhile meanwhile) {
  pthread_mutex_t& mutex = mutexOf(lock);
  std::atomic<bool> over = false;
  pthread_mutex_lock(&mutex);
  const std::jthread thread([&] {
    operation();
    over = true;
  });
  while (!over && !isAwaited(mutex)) std::this_thread::yield();
  const bool waits = isAwaited(mutex);
  if (waits) meanwhile();
  pthread_mutex_unlock(&mutex);
  return waits;
}

template <typename Lockable, typename Operation>
bool waitsFor(Lockable& lock, Operation operation) {
  return waitsFor(lock, operation, [] {});
}

}  // namespace testing_support
