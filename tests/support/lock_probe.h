// Looks at objects' locks from outside.
#pragma once

#include <pthread.h>

#include <thread>
#include <vector>

#include "platform/lockable.h"

namespace testing_support {

/// Whether some thread holds one of the objects' locks. Asks on a thread of its own, because the
/// owner of a recursive lock could take it again.
inline bool isAnyLocked(const std::vector<basekit::ObjectLevelLockable*>& objects) {
  static_assert(sizeof *objects[0] == sizeof(pthread_mutex_t),
                "the mutex is the object's only field");
  bool locked = false;
  std::thread([&] {
    for (basekit::ObjectLevelLockable* object : objects) {
      auto* mutex = reinterpret_cast<pthread_mutex_t*>(object);
      if (pthread_mutex_trylock(mutex) != 0) {
        locked = true;
      } else {
        pthread_mutex_unlock(mutex);
      }
    }
  }).join();
  return locked;
}

inline bool isLocked(basekit::ObjectLevelLockable& object) { return isAnyLocked({&object}); }

}  // namespace testing_support
