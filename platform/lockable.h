// The agent's object lock: one recursive mutex per object and a scoped guard for it.
#pragma once

#include <pthread.h>

namespace basekit {

/// Base of every object that carries its own recursive mutex.
///
/// Deliberately without virtual operations: a polymorphic class that derives from it has its table
/// pointer first and the mutex right behind it. Neither copyable nor movable: threads hold its
/// address. The errors of the lock calls are ignored; nothing here throws.
///
/// Kept oddity: if the mutex attribute cannot be created or made recursive, the mutex stays
/// uninitialised and nobody is told. That matters to a host that runs out of memory while it loads
/// a module; the storage is zeroed, so that even then the lock behaves the same every time.
class ObjectLevelLockable {
 public:
  ObjectLevelLockable() noexcept {
    pthread_mutexattr_t recursive;
    if (pthread_mutexattr_init(&recursive) != 0) return;
    if (pthread_mutexattr_settype(&recursive, PTHREAD_MUTEX_RECURSIVE) == 0) {
      (void)pthread_mutex_init(&mutex_, &recursive);
    }
    (void)pthread_mutexattr_destroy(&recursive);
  }

  ~ObjectLevelLockable() { (void)pthread_mutex_destroy(&mutex_); }

  ObjectLevelLockable(const ObjectLevelLockable&) = delete;
  ObjectLevelLockable& operator=(const ObjectLevelLockable&) = delete;

  /// Holds an object's lock from construction to destruction. The same thread may nest guards of
  /// one object. REQUIRES: the object outlives the guard.
  class Lock {
   public:
    explicit Lock(ObjectLevelLockable& object) noexcept : object_(object) {
      (void)pthread_mutex_lock(&object_.mutex_);
    }
    ~Lock() { (void)pthread_mutex_unlock(&object_.mutex_); }

    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

   private:
    ObjectLevelLockable& object_;
  };

 private:
  pthread_mutex_t mutex_{};
};

}  // namespace basekit
