#include "agent/base/standard_error.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace agent {
namespace {

constexpr size_t PIECE =
    4096;  // bytes that a pipe takes at once if it takes any: PIPE_BUF, pipe(7)

bool isReady() {
  pollfd stream{STDERR_FILENO, POLLOUT, 0};
  return ::poll(&stream, 1, 0) == 1 && (stream.revents & POLLOUT) != 0;
}

}  // namespace

bool writeStandardError(std::string_view line) {
  // The journal's end is a socket. Making the stream itself not wait would change it for all who
  // share it.
  const ssize_t sent = ::send(STDERR_FILENO, line.data(), line.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
  if (sent >= 0) return static_cast<size_t>(sent) == line.size();
  if (errno != ENOTSOCK) return false;
  while (!line.empty()) {
    if (!isReady()) return false;
    const ssize_t written = ::write(STDERR_FILENO, line.data(), std::min(line.size(), PIECE));
    if (written < 0 && errno != EINTR) return false;
    if (written > 0) line.remove_prefix(static_cast<size_t>(written));
  }
  return true;
}

}  // namespace agent
