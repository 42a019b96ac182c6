#include "agent/base/standard_streams.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "agent/base/start_failure.h"

namespace agent {
namespace {

bool g_logIsClosed = false;  // constant after the start

}  // namespace

std::string openClosedStreams() {
  static constexpr const char* NAMES[] = {"input", "output", "error"};
  std::string closed;
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
    if (::fcntl(stream, F_GETFD) >= 0) continue;
    // The lowest free number is this one.
    if (::open("/dev/null", O_RDWR) != stream) {
      throw StartFailure(EXIT_UNAVAILABLE, std::string("standard ") + NAMES[stream] +
                                               " is closed, and /dev/null cannot be opened: " +
                                               std::generic_category().message(errno));
    }
    closed += std::string(closed.empty() ? "" : ", ") + NAMES[stream];
    if (stream == STDERR_FILENO) g_logIsClosed = true;
  }
  return closed;
}

bool logIsClosed() { return g_logIsClosed; }

}  // namespace agent
