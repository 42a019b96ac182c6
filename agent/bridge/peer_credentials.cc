#include "agent/bridge/peer_credentials.h"

#include <sys/socket.h>

#include <cerrno>
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

}  // namespace

std::optional<BridgeSession> peerOf(int socket) {
  ucred peer{};
  socklen_t size = sizeof peer;
  if (::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) return {};
  return BridgeSession(peer.uid, peer.gid, peer.pid, groupsOf(socket));
}

}  // namespace agent
