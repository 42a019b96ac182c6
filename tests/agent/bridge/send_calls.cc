#include "tests/agent/bridge/send_calls.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>

namespace agent_testing {
namespace {

std::atomic<bool> g_disturbed = false;
std::atomic<unsigned> g_calls = 0;  // while they are disturbed
std::atomic<int> g_error = 0;       // of the next one; 0: it does not fail

int errorOfThisOne() {
  if (const int error = g_error.exchange(0)) return error;
  return g_disturbed && ++g_calls % 2 == 0 ? EINTR : 0;
}

}  // namespace

void disturbSends(bool disturbed) { g_disturbed = disturbed; }
void failNextSend(int error) { g_error = error; }

}  // namespace agent_testing

#pragma GCC visibility push(default)
extern "C" ssize_t send(int socket, const void* bytes, size_t size, int flags) {
  if ((flags & MSG_DONTWAIT) != 0 && socket != STDERR_FILENO) {
    if (const int error = agent_testing::errorOfThisOne()) {
      errno = error;
      return -1;
    }
    if (agent_testing::g_disturbed) size = std::min<size_t>(size, 777);
  }
  return ::sendto(socket, bytes, size, flags, nullptr, 0);
}
#pragma GCC visibility pop
