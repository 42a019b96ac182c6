// Looks at objects' locks from outside.
#pragma once

#include <pthread.h>

#include <thread>
#include <vector>

#include "tests/support/mutex_of.h"

namespace testing_support {

/// Whether some thread holds one of the objects' locks. Asks on a thread of its own, because the
/// owner of a recursive lock could take it again.
inline bool isAnyLocked(const std::vector<basekit::ObjectLevelLockable*>& objects) {
  bool locked = false;
  std::thread([&] {
    for (basekit::ObjectLevelLockable* object : objects) {
      pthread_mutex_t& mutex = mutexOf(*object);
      if (pthread_mutex_trylock(&mutex) != 0) {
        locked = true;
      } else {
        pthread_mutex_unlock(&mutex);
      }
    }
  }).join();
  return locked;
}

inline bool isLocked(basekit::ObjectLevelLockable& object) { return isAnyLocked({&object}); }

}  // namespace testing_support
