// A process that is neither root nor the agent's own user, and a directory that is not ours.
#pragma once

#include <unistd.h>

#include <optional>
#include <string>

namespace testing_support {

/// Not 65534, which is several users in a user namespace.
inline constexpr uid_t NOBODY = 54321;

/// Why a child of this process cannot become another user; empty if it can. REQUIRES: the process
/// has one thread.
std::string whyNoOtherUser();

/// Why a child of this process would keep root's rights in dropRights(); empty if it would not: an
/// ordinary user has none to lose. REQUIRES: as above.
std::string whyRightsStay();

/// Takes root's rights from the process for good. Only for children. Throws std::system_error.
void dropRights();

/// Somebody else's directory, and who that is.
struct ForeignDirectory {
  std::string path;
  uid_t owner;
};

/// Gives the directory away where the process may; else it is the root of the system. Nothing if
/// that belongs to us.
std::optional<ForeignDirectory> foreignDirectory(const std::string& mine);

}  // namespace testing_support
