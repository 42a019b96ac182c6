// Whose a file or a process is. In a user namespace all users that have no number there share one,
// the overflow number (user_namespaces(7)): it says nothing of who they are.
#pragma once

#include <sys/types.h>

#include <string_view>

namespace agent {

/// False if the number may stand for several users, or groups. Thread-safe.
bool isKnownUser(uid_t user);
bool isKnownGroup(gid_t group);

/// Whether that is the agent's own user, beyond doubt. Thread-safe.
bool isOwnUser(uid_t user);

/// Whether a user namespace with this map, in the form of /proc/PID/uid_map, has a number for every
/// user.
bool coversAll(std::string_view idMap);

}  // namespace agent
