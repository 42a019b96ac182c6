// Looks at an object's lock from outside.
#pragma once

#include <pthread.h>

#include <thread>

#include "platform/lockable.h"

namespace testing_support {

/// True while some thread holds the object's lock. Asks on a thread of its own, because the owner
/// of a recursive lock could take it again.
inline bool isLocked(basekit::ObjectLevelLockable& object) {
  static_assert(sizeof object == sizeof(pthread_mutex_t), "the mutex is the object's only field");
  auto* mutex = reinterpret_cast<pthread_mutex_t*>(&object);
  bool locked = true;
  std::thread([&] {
    if (pthread_mutex_trylock(mutex) != 0) return;
    locked = false;
    pthread_mutex_unlock(mutex);
  }).join();
  return locked;
}

}  // namespace testing_support
