// The mutex that is an object's lock, to be looked at from outside.
#pragma once

#include <pthread.h>

#include "platform/lockable.h"

namespace testing_support {

inline pthread_mutex_t& mutexOf(basekit::ObjectLevelLockable& object) {
  static_assert(sizeof object == sizeof(pthread_mutex_t), "the mutex is the object's only field");
  return reinterpret_cast<pthread_mutex_t&>(object);
}

}  // namespace testing_support
