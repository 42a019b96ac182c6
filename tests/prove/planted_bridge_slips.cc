// More slips, of how the agent treats its clients; see planted_slips.cc.
//   keep-descriptors  every tenth socket is never closed
//   keep-memory       each client that comes costs 16 KiB for ever
//   one-at-a-time     sessions wait for each other when they receive
//   interrupted       a receive that a signal interrupts is taken for the session's end
//   stay-open         a session that is to end stays open
//   unchecked-memory  they take memory then, and do not look whether they got it
//   keep-lock         they take a lock then, and keep it when there is no memory
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include "tests/prove/slip.h"

namespace {

using prove::next;
using prove::slips;

constexpr int EVERY = 10;
constexpr size_t KEPT = 16384;
constexpr useconds_t WAIT = 10'000;

bool isSocket(int descriptor) {
  struct stat status {};
  return fstat(descriptor, &status) == 0 && S_ISSOCK(status.st_mode);
}

}  // namespace

#pragma GCC visibility push(default)
extern "C" {

int close(int descriptor) {
  static std::atomic<int> closed = 0;
  if (slips("keep-descriptors") && isSocket(descriptor) && ++closed % EVERY == 0) {
    return shutdown(descriptor, SHUT_RDWR);
  }
  return next<int(int)>("close")(descriptor);
}

int shutdown(int socket, int how) noexcept {
  return slips("stay-open") ? 0 : next<int(int, int)>("shutdown")(socket, how);
}

int accept4(int listener, sockaddr* address, socklen_t* size, int flags) {
  if (slips("keep-memory")) {
    void* volatile kept = std::malloc(KEPT);
    if (kept != nullptr) std::memset(kept, 1, KEPT);
  }
  return next<int(int, sockaddr*, socklen_t*, int)>("accept4")(listener, address, size, flags);
}

ssize_t recv(int descriptor, void* bytes, size_t size, int flags) {
  if (slips("one-at-a-time")) {
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    usleep(WAIT);
  }
  const ssize_t received =
      next<ssize_t(int, void*, size_t, int)>("recv")(descriptor, bytes, size, flags);
  if (received < 0 && errno == EINTR && slips("interrupted")) return 0;
  if (slips("unchecked-memory") || slips("keep-lock")) {
    static std::mutex mutex;
    mutex.lock();
    void* volatile taken = std::malloc(size);
    if (taken == nullptr && slips("keep-lock")) return -1;
    std::memset(taken, 1, size);
    std::free(taken);
    mutex.unlock();
  }
  return received;
}

}  // extern "C"
#pragma GCC visibility pop
