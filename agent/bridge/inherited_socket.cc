#include "agent/bridge/inherited_socket.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "agent/base/start_failure.h"
#include "agent/bridge/socket_path.h"

namespace agent {
namespace {

using asio::local::stream_protocol;

constexpr int FIRST_DESCRIPTOR = 3;  // SD_LISTEN_FDS_START

[[noreturn]] void fail(const std::string& reason) {
  throw StartFailure(EXIT_UNAVAILABLE, "the socket of the service manager " + reason);
}

/// Takes the number from the environment; 0 if there is none.
int taken(const char* name) {
  const char* const value = std::getenv(name);
  const std::string_view text = value == nullptr ? "" : value;
  int number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool whole = result.ec == std::errc() && result.ptr == text.data() + text.size();
  (void)::unsetenv(name);
  return whole ? number : 0;
}

int option(int descriptor, int name) {
  int value = -1;
  socklen_t size = sizeof value;
  return ::getsockopt(descriptor, SOL_SOCKET, name, &value, &size) == 0 ? value : -1;
}

/// Empty if it is bound to none.
std::string pathOf(int descriptor) {
  sockaddr_un address{};
  socklen_t size = sizeof address;
  (void)::getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &size);
  return {address.sun_path, ::strnlen(address.sun_path, sizeof address.sun_path)};
}

}  // namespace

std::optional<int> inheritedDescriptor() {
  const int process = taken("LISTEN_PID");
  const int count = taken("LISTEN_FDS");
  (void)::unsetenv("LISTEN_FDNAMES");
  if (process != ::getpid() || count <= 0) return std::nullopt;
  if (count > 1) fail("is not the only one: it has passed " + std::to_string(count));
  return FIRST_DESCRIPTOR;
}

stream_protocol::acceptor listenOn(asio::io_context& io, int descriptor, const std::string& path) {
  (void)::fcntl(descriptor, F_SETFD, FD_CLOEXEC);
  if (option(descriptor, SO_DOMAIN) != AF_UNIX || option(descriptor, SO_TYPE) != SOCK_STREAM ||
      option(descriptor, SO_ACCEPTCONN) != 1) {
    fail("is not a Unix stream socket that listens");
  }
  const std::string bound = pathOf(descriptor);
  const FileIdentity identity = identityOf(bound);
  if (identity == FileIdentity{} || identity != identityOf(path)) {
    fail("is at \"" + bound + "\", where clients do not look for it: they look at " + path);
  }
  checkDirectory(path);
  stream_protocol::acceptor acceptor(io);
  asio::error_code error;
  (void)acceptor.assign(stream_protocol(), descriptor, error);
  // A client may be gone again by the time that it is to be taken.
  if (!error) (void)acceptor.native_non_blocking(true, error);
  if (error) fail("cannot be listened on: " + error.message());
  return acceptor;
}

}  // namespace agent
