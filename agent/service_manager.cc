#include "agent/service_manager.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <charconv>
#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace agent {
namespace {

std::string_view environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string_view() : value;
}

/// 0 if the variable is not a number.
long long number(const char* name) {
  const std::string_view text = environment(name);
  long long value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  return result.ec == std::errc() && result.ptr == text.data() + text.size() ? value : 0;
}

}  // namespace

void notifyServiceManager(std::string_view state) {
  const std::string_view path = environment("NOTIFY_SOCKET");
  sockaddr_un address{};
  // The longest needs no zero behind it, unix(7).
  if (path.empty() || path.size() > sizeof address.sun_path) return;
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path.data(), path.size());
  if (path.front() == '@') address.sun_path[0] = '\0';  // an abstract name

  const int socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (socket < 0) return;
  (void)::sendto(socket, state.data(), state.size(), MSG_DONTWAIT | MSG_NOSIGNAL,
                 reinterpret_cast<const sockaddr*>(&address),
                 static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path.size()));
  (void)::close(socket);
}

std::optional<std::chrono::microseconds> watchdogInterval() {
  const long long limit = number("WATCHDOG_USEC");
  const std::string_view process = environment("WATCHDOG_PID");
  if (limit <= 0 || (!process.empty() && number("WATCHDOG_PID") != ::getpid())) return std::nullopt;
  return std::chrono::microseconds(limit / 2);
}

}  // namespace agent
