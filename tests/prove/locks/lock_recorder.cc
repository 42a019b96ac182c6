// Preloaded: writes down in which order threads take mutexes. Each pair of places "one was held,
// the other was taken" becomes a line of a file of the process in $LOCK_RECORDS, once. Takes frames
// by frame pointers, so the code is to be built without optimisation.
//
// A line: "held taken", or "- taken" for a mutex that is taken while none is held. Each of both is
// "OBJECT/FRAME/FRAME/...", as FILE+OFFSET; OBJECT is what stands right in front of the mutex, the
// table pointer of a polymorphic object that begins with its mutex, or "-".
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr size_t FRAMES = 8;  // through the wrappers of a mutex to who uses them
constexpr size_t MOST_HELD = 64;
constexpr size_t MOST_PAIRS = 1 << 14;
constexpr uintptr_t STACK = 8 << 20;  // bytes; frames farther apart are none

struct Place {
  pthread_mutex_t* mutex;
  int times;  // a recursive mutex
  std::array<uintptr_t, FRAMES> frames;
  uintptr_t object;
};

struct Held {
  std::array<Place, MOST_HELD> places;
  size_t count;
  bool busy;  // this thread is recording
};

__thread Held t_held __attribute__((tls_model("initial-exec")));

std::array<std::atomic<uint64_t>, MOST_PAIRS> g_seen;

template <typename Function>
Function next(const char* name, const char* version = nullptr) {
  void* const found =
      version == nullptr ? ::dlsym(RTLD_NEXT, name) : ::dlvsym(RTLD_NEXT, name, version);
  return reinterpret_cast<Function>(found);
}

uint64_t mixed(uint64_t hash, uint64_t value) { return (hash ^ value) * 0x100000001b3U; }

uint64_t hashOf(const Place& place) {
  uint64_t hash = 0xcbf29ce484222325U;
  for (const uintptr_t frame : place.frames) hash = mixed(hash, frame);
  return mixed(hash, place.object);
}

/// Whether it is seen for the first time. Forgets the last ones when there are too many.
bool isNew(uint64_t hash) {
  if (hash == 0) hash = 1;
  for (size_t step = 0; step < MOST_PAIRS; ++step) {
    uint64_t seen = 0;
    auto& slot = g_seen[(hash + step) % MOST_PAIRS];
    if (slot.compare_exchange_strong(seen, hash)) return true;
    if (seen == hash) return false;
  }
  return false;
}

void putAddress(char*& at, const char* end, uintptr_t address) {
  Dl_info info{};
  if (address == 0 || ::dladdr(reinterpret_cast<void*>(address), &info) == 0) {
    at += ::snprintf(at, static_cast<size_t>(end - at), "-");
    return;
  }
  const uintptr_t base = reinterpret_cast<uintptr_t>(info.dli_fbase);
  at += ::snprintf(at, static_cast<size_t>(end - at), "%s+%lx", info.dli_fname,
                   static_cast<unsigned long>(address - base));
}

void putPlace(char*& at, const char* end, const Place* place) {
  if (place == nullptr) {
    at += ::snprintf(at, static_cast<size_t>(end - at), "-");
    return;
  }
  putAddress(at, end, place->object);
  for (const uintptr_t frame : place->frames) {
    if (frame == 0) break;
    at += ::snprintf(at, static_cast<size_t>(end - at), "|");
    putAddress(at, end, frame - 1);  // within the call
  }
}

void write(const Place* held, const Place& taken) {
  static const char* const directory = ::getenv("LOCK_RECORDS");
  if (directory == nullptr) return;
  std::array<char, 16384> line;
  char* at = line.data();
  const char* const end = line.data() + line.size() - 2;
  putPlace(at, end, held);
  *at++ = '\t';
  putPlace(at, end, &taken);
  *at++ = '\n';
  std::array<char, 512> path;
  (void)::snprintf(path.data(), path.size(), "%s/%d", directory, static_cast<int>(::getpid()));
  // By the system's own calls: a test may have put its own in the place of the library's.
  const long file =
      ::syscall(SYS_openat, AT_FDCWD, path.data(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  if (file < 0) return;
  (void)::syscall(SYS_write, file, line.data(), static_cast<size_t>(at - line.data()));
  (void)::syscall(SYS_close, file);
}

/// The frames above the one at `frame`.
void look(Place& place, const uintptr_t* frame) {
  for (uintptr_t& one : place.frames) {
    one = frame[1];
    const auto* const above = reinterpret_cast<const uintptr_t*>(frame[0]);
    const auto here = reinterpret_cast<uintptr_t>(frame);
    if (frame[0] <= here || frame[0] - here > STACK) return;
    frame = above;
  }
}

void push(const Place& place, bool waited) {
  Held& held = t_held;
  if (held.count == MOST_HELD) return;
  held.places[held.count++] = place;
  if (!waited) return;  // who does not wait for it cannot wait for ever
  const uint64_t hash = hashOf(place);
  for (size_t i = 0; i + 1 < held.count; ++i) {
    if (isNew(mixed(hashOf(held.places[i]), hash))) write(&held.places[i], place);
  }
  if (held.count == 1 && isNew(hash)) write(nullptr, place);
}

Place* find(const pthread_mutex_t* mutex) {
  Held& held = t_held;
  for (size_t i = held.count; i-- > 0;) {
    if (held.places[i].mutex == mutex) return &held.places[i];
  }
  return nullptr;
}

/// What is recorded takes locks too, and is not recorded; nor does it change the caller's errno.
template <typename Record>
void recording(Record record) {
  if (t_held.busy) return;
  t_held.busy = true;
  const int error = errno;
  record();
  errno = error;
  t_held.busy = false;
}

void took(pthread_mutex_t* mutex, const void* frame, bool waited) {
  recording([&] {
    if (Place* const again = find(mutex)) {
      ++again->times;
      return;
    }
    Place place{.mutex = mutex, .times = 1, .frames = {}, .object = 0};
    look(place, static_cast<const uintptr_t*>(frame));
    place.object = reinterpret_cast<uintptr_t*>(mutex)[-1];
    push(place, waited);
  });
}

void drop(Place* place) {
  Held& held = t_held;
  --held.count;
  for (; place != &held.places[held.count]; ++place) *place = place[1];
}

void gave(const pthread_mutex_t* mutex) {
  Place* const place = find(mutex);
  if (place != nullptr && --place->times == 0) drop(place);
}

/// Waits for a condition; the mutex is taken again where it was taken before.
template <typename Wait>
int waiting(const pthread_mutex_t* mutex, Wait wait) {
  Place* const found = find(mutex);
  if (found == nullptr) return wait();
  const Place place = *found;
  drop(found);
  const int result = wait();
  recording([&] { push(place, true); });
  return result;
}

using WaitUntil = int (*)(pthread_cond_t*, pthread_mutex_t*, const timespec*);
using ClockWait = int (*)(pthread_cond_t*, pthread_mutex_t*, clockid_t, const timespec*);

}  // namespace

extern "C" {

int pthread_mutex_lock(pthread_mutex_t* mutex) {
  static const auto real = next<int (*)(pthread_mutex_t*)>("pthread_mutex_lock");
  const int result = real(mutex);
  if (result == 0) took(mutex, __builtin_frame_address(0), true);
  return result;
}

int pthread_mutex_trylock(pthread_mutex_t* mutex) {
  static const auto real = next<int (*)(pthread_mutex_t*)>("pthread_mutex_trylock");
  const int result = real(mutex);
  if (result == 0) took(mutex, __builtin_frame_address(0), false);
  return result;
}

int pthread_mutex_unlock(pthread_mutex_t* mutex) {
  static const auto real = next<int (*)(pthread_mutex_t*)>("pthread_mutex_unlock");
  gave(mutex);
  return real(mutex);
}

int pthread_cond_wait(pthread_cond_t* condition, pthread_mutex_t* mutex) {
  static const auto real =
      next<int (*)(pthread_cond_t*, pthread_mutex_t*)>("pthread_cond_wait", "GLIBC_2.3.2");
  return waiting(mutex, [&] { return real(condition, mutex); });
}

// With a time of 64 bits in 32-bit code these go by other names.
int pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex,
                           const timespec* time) {
  static const auto real = next<WaitUntil>("pthread_cond_timedwait", "GLIBC_2.3.2");
  return waiting(mutex, [&] { return real(condition, mutex, time); });
}

int pthread_cond_clockwait(pthread_cond_t* condition, pthread_mutex_t* mutex, clockid_t clock,
                           const timespec* time) {
  static const auto real = next<ClockWait>("pthread_cond_clockwait");
  return waiting(mutex, [&] { return real(condition, mutex, clock, time); });
}

int waitUntil64(pthread_cond_t* condition, pthread_mutex_t* mutex,
                const timespec* time) __asm__("__pthread_cond_timedwait64");
int waitUntil64(pthread_cond_t* condition, pthread_mutex_t* mutex, const timespec* time) {
  static const auto real = next<WaitUntil>("__pthread_cond_timedwait64");
  return waiting(mutex, [&] { return real(condition, mutex, time); });
}

int clockWait64(pthread_cond_t* condition, pthread_mutex_t* mutex, clockid_t clock,
                const timespec* time) __asm__("__pthread_cond_clockwait64");
int clockWait64(pthread_cond_t* condition, pthread_mutex_t* mutex, clockid_t clock,
                const timespec* time) {
  static const auto real = next<ClockWait>("__pthread_cond_clockwait64");
  return waiting(mutex, [&] { return real(condition, mutex, clock, time); });
}
}
