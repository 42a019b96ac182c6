#include "agent/bridge/peer_credentials.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>
#include <vector>

namespace agent {
namespace {

std::vector<gid_t> groupsOf(int socket) {
  std::vector<gid_t> groups(32);
  for (;;) {
    auto size = static_cast<socklen_t>(groups.size() * sizeof(gid_t));
    const int result = ::getsockopt(socket, SOL_SOCKET, SO_PEERGROUPS, groups.data(), &size);
    groups.resize(size / sizeof(gid_t));
    if (result == 0) return groups;
    if (errno != ERANGE) return {};
  }
}

/// The name that the process has given itself, /proc/PID/comm (proc(5)); empty if it is gone or not
/// to be seen from here.
std::string programOf(pid_t pid) {
  const std::string path = "/proc/" + std::to_string(pid) + "/comm";
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) return {};
  std::array<char, 64> name{};  // the kernel keeps 15 bytes of it
  const ssize_t size = ::read(file, name.data(), name.size());
  (void)::close(file);
  std::string program(name.data(), size > 0 ? static_cast<size_t>(size) : 0);
  if (program.ends_with('\n')) program.pop_back();
  return program;
}

}  // namespace

std::optional<BridgeSession> peerOf(int socket) {
  ucred peer{};
  socklen_t size = sizeof peer;
  if (::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) return {};
  return BridgeSession(peer.uid, peer.gid, peer.pid, groupsOf(socket), programOf(peer.pid));
}

}  // namespace agent
