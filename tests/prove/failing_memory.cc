// Loaded before a program's libraries: lets allocations fail, as a page of memory says that the
// file MEMORY_SHORTAGE holds and that its starter shares.
#include <fcntl.h>
#include <grp.h>
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdlib>

#include "tests/prove/slip.h"

extern "C" {
// The C library's own, which do not come back here; GNU C Library, malloc/malloc.c.
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* memory, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
void __libc_free(void* memory);
}

namespace {

/// tests/prove/shortage/scarce_memory.py has the same.
struct Shortage {
  std::atomic<int32_t> left;     ///< the allocation of this number fails, from 1 on; 0: none does
  std::atomic<int32_t> forGood;  ///< 1: all after it fail, too
  std::atomic<int32_t> failed;   ///< how many have
  std::atomic<int32_t> live;     ///< bytes that are allocated, since the begin
};

Shortage* shortage() {
  static std::atomic<Shortage*> found = nullptr;
  static std::atomic<bool> looked = false;
  if (!looked.exchange(true)) {
    const char* const name = std::getenv("MEMORY_SHORTAGE");
    const int file = name == nullptr ? -1 : open(name, O_RDWR | O_CLOEXEC);
    if (file >= 0) {
      void* const page =
          mmap(nullptr, sizeof(Shortage), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
      (void)close(file);
      if (page != MAP_FAILED) found = static_cast<Shortage*>(page);
    }
  }
  return found;
}

/// The C library looks for a group: when it has no memory to find out where, it crashes
/// (nss/nss_database.c).
constinit thread_local bool looksForGroup = false;

/// The first allocation of a process is the reserve that the C++ library makes for exceptions
/// (libsupc++/eh_alloc.cc): without it a throw without memory ends the process without a reason.
constinit std::atomic<bool> reserve = true;

bool fails() {
  if (reserve.exchange(false)) return false;
  Shortage* const now = shortage();
  if (now == nullptr || looksForGroup) return false;
  int32_t left = now->left;
  do {
    if (left == 0) return false;
    if (left == 1 && now->forGood != 0) break;
  } while (!now->left.compare_exchange_weak(left, left - 1));
  if (left != 1) return false;
  ++now->failed;
  errno = ENOMEM;
  return true;
}

int32_t sizeOf(void* memory) { return static_cast<int32_t>(malloc_usable_size(memory)); }

void* counted(void* memory) {
  Shortage* const now = shortage();
  if (now != nullptr && memory != nullptr) now->live += sizeOf(memory);
  return memory;
}

void uncounted(void* memory) {
  Shortage* const now = shortage();
  if (now != nullptr && memory != nullptr) now->live -= sizeOf(memory);
}

}  // namespace

#pragma GCC visibility push(default)
extern "C" {

void* malloc(size_t size) { return fails() ? nullptr : counted(__libc_malloc(size)); }

void* calloc(size_t count, size_t size) {
  return fails() ? nullptr : counted(__libc_calloc(count, size));
}

void* realloc(void* memory, size_t size) {
  if (fails()) return nullptr;
  uncounted(memory);
  void* const moved = __libc_realloc(memory, size);
  return counted(moved == nullptr && size > 0 ? memory : moved) == nullptr ? nullptr : moved;
}

void* memalign(size_t alignment, size_t size) {
  return fails() ? nullptr : counted(__libc_memalign(alignment, size));
}

void* aligned_alloc(size_t alignment, size_t size) { return memalign(alignment, size); }

int posix_memalign(void** memory, size_t alignment, size_t size) {
  void* const made = memalign(alignment, size);
  if (made != nullptr) *memory = made;
  return made == nullptr ? ENOMEM : 0;
}

int getgrnam_r(const char* name, group* entry, char* buffer, size_t size, group** found) {
  looksForGroup = true;
  const int result = prove::next<int(const char*, group*, char*, size_t, group**)>("getgrnam_r")(
      name, entry, buffer, size, found);
  looksForGroup = false;
  return result;
}

void free(void* memory) {
  uncounted(memory);
  __libc_free(memory);
}

}  // extern "C"
#pragma GCC visibility pop
