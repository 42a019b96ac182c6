#include "tests/module/lock_calls.h"

#include <algorithm>
#include <atomic>
#include <cerrno>

#include "tests/module/next_function.h"

namespace host {
namespace {

// A fixed store: the calls are recorded while allocations may be set to fail.
struct LockList {
  static constexpr size_t CAPACITY = 1024;
  basekit::ObjectLevelLockable* items[CAPACITY];
  size_t size = 0;

  bool contains(const basekit::ObjectLevelLockable* lock) const {
    return std::find(items, items + size, lock) != items + size;
  }
  void add(basekit::ObjectLevelLockable* lock) {
    if (size < CAPACITY) items[size++] = lock;
  }
  std::vector<basekit::ObjectLevelLockable*> all() const { return {items, items + size}; }
};

constinit LockList made{};
constinit LockList destroyed{};
constinit LockList taken{};
constinit bool recording = false;
constinit bool recordingTakings = false;
constinit std::atomic<int> attributes = 0;
constinit Reaction lockMade = nullptr;
constinit AttributeFailure failing = AttributeFailure::None;

static_assert(sizeof(basekit::ObjectLevelLockable) == sizeof(pthread_mutex_t),
              "the mutex is the lock's only field");

basekit::ObjectLevelLockable* lockOf(pthread_mutex_t* mutex) {
  return reinterpret_cast<basekit::ObjectLevelLockable*>(mutex);
}

}  // namespace

void recordLocks(AttributeFailure failure) {
  made.size = 0;
  destroyed.size = 0;
  attributes = 0;
  failing = failure;
  recording = true;
}

void whenALockIsMade(Reaction reaction) { lockMade = reaction; }

std::vector<basekit::ObjectLevelLockable*> locksMade() { return made.all(); }
std::vector<basekit::ObjectLevelLockable*> locksDestroyed() { return destroyed.all(); }

void recordTakings() {
  taken.size = 0;
  recordingTakings = true;
}

std::vector<basekit::ObjectLevelLockable*> locksTaken() {
  recordingTakings = false;
  return taken.all();
}

int attributesLeft() { return attributes; }

}  // namespace host

#pragma GCC visibility push(default)
extern "C" {

int pthread_mutexattr_init(pthread_mutexattr_t* attribute) noexcept {
  if (host::failing == host::AttributeFailure::Init) return ENOMEM;
  ++host::attributes;
  return host::nextFunction<int(pthread_mutexattr_t*)>("pthread_mutexattr_init")(attribute);
}

int pthread_mutexattr_settype(pthread_mutexattr_t* attribute, int type) noexcept {
  if (host::failing == host::AttributeFailure::SetType) return ENOMEM;
  return host::nextFunction<int(pthread_mutexattr_t*, int)>("pthread_mutexattr_settype")(attribute,
                                                                                         type);
}

int pthread_mutexattr_destroy(pthread_mutexattr_t* attribute) noexcept {
  --host::attributes;
  return host::nextFunction<int(pthread_mutexattr_t*)>("pthread_mutexattr_destroy")(attribute);
}

int pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t* attribute) noexcept {
  if (host::recording) host::made.add(host::lockOf(mutex));
  using Init = int(pthread_mutex_t*, const pthread_mutexattr_t*);
  const int result = host::nextFunction<Init>("pthread_mutex_init")(mutex, attribute);
  if (host::lockMade != nullptr) host::lockMade();
  return result;
}

int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
  using Lock = int(pthread_mutex_t*);
  static constinit std::atomic<Lock*> next = nullptr;  // asked for often
  if (next == nullptr) next = host::nextFunction<Lock>("pthread_mutex_lock");
  if (host::recordingTakings) host::taken.add(host::lockOf(mutex));
  return next.load()(mutex);
}

int pthread_mutex_destroy(pthread_mutex_t* mutex) noexcept {
  auto* lock = host::lockOf(mutex);
  if (host::recording && host::made.contains(lock)) host::destroyed.add(lock);
  return host::nextFunction<int(pthread_mutex_t*)>("pthread_mutex_destroy")(mutex);
}

}  // extern "C"
#pragma GCC visibility pop
