// Loaded before the others under valgrind in 32 bit, where it misses two things. Helgrind knows
// some calls by names with a version, which it reads in tables of symbols that the C library lacks
// there: with NAMED these calls come by here, under such names. And neither tool knows the call
// that waits with 64 bits of time. The name of a library that they look into is given by the
// linker.
//
// https://valgrind.org/docs/manual/hg-manual.html, helgrind/hg_intercepts.c (PTH_FUNC).
#include <dlfcn.h>
#include <pthread.h>

#include <cstdint>
#include <ctime>

namespace {

template <typename Call>
Call* next(Call*, const char* name, const char* version) {
  return reinterpret_cast<Call*>(::dlvsym(RTLD_NEXT, name, version));
}

}  // namespace

extern "C" {

#ifdef NAMED
int named_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*run)(void*),
                 void* data) {
  return next(::pthread_create, "pthread_create", "GLIBC_2.34")(thread, attributes, run, data);
}
int named_init(pthread_cond_t* condition, const pthread_condattr_t* attributes) {
  return next(::pthread_cond_init, "pthread_cond_init", "GLIBC_2.3.2")(condition, attributes);
}
int named_destroy(pthread_cond_t* condition) {
  return next(::pthread_cond_destroy, "pthread_cond_destroy", "GLIBC_2.3.2")(condition);
}
int named_wait(pthread_cond_t* condition, pthread_mutex_t* mutex) {
  return next(::pthread_cond_wait, "pthread_cond_wait", "GLIBC_2.3.2")(condition, mutex);
}
int named_signal(pthread_cond_t* condition) {
  return next(::pthread_cond_signal, "pthread_cond_signal", "GLIBC_2.3.2")(condition);
}
int named_broadcast(pthread_cond_t* condition) {
  return next(::pthread_cond_broadcast, "pthread_cond_broadcast", "GLIBC_2.3.2")(condition);
}
__asm__(".symver named_create, pthread_create@@GLIBC_2.34");
__asm__(".symver named_init, pthread_cond_init@@GLIBC_2.3.2");
__asm__(".symver named_destroy, pthread_cond_destroy@@GLIBC_2.3.2");
__asm__(".symver named_wait, pthread_cond_wait@@GLIBC_2.3.2");
__asm__(".symver named_signal, pthread_cond_signal@@GLIBC_2.3.2");
__asm__(".symver named_broadcast, pthread_cond_broadcast@@GLIBC_2.3.2");
#endif

/// As the C library has it where time_t is shorter.
struct LongTime {
  int64_t seconds;
  int32_t nanoseconds;
  int32_t unused;
};

int wait_until(pthread_cond_t* condition, pthread_mutex_t* mutex, clockid_t clock,
               const LongTime* until) {
  const timespec time = {static_cast<time_t>(until->seconds), until->nanoseconds};
  return ::pthread_cond_clockwait(condition, mutex, clock, &time);
}
__asm__(".symver wait_until, __pthread_cond_clockwait64@@GLIBC_2.34");

}  // extern "C"
