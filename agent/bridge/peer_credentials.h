// Who is at the other end of a socket.
#pragma once

#include <optional>

#include "agent/base/bridge_session.h"

namespace agent {

/// A session of the process that has connected, with the kernel's word for its user, groups and
/// name; nothing if the kernel does not say. REQUIRES: a connected Unix socket.
std::optional<BridgeSession> peerOf(int socket);

}  // namespace agent
