// Who may do what on the bridge.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

#include "lparams/server.h"

namespace agent {

/// The agent's own user and root have every level of every module; the members of the
/// administrators' group write settings (level 0) and save them (level 2).
class AccessRules {
 public:
  /// The administrators' group is `adminGroup` or, if that is empty, the one that the settings name
  /// at the moment. REQUIRES: one exists at a time, while sessions do.
  AccessRules(LPARAMS::Server::ADMIN_t& settings, std::string adminGroup);
  ~AccessRules();

  AccessRules(const AccessRules&) = delete;
  AccessRules& operator=(const AccessRules&) = delete;

  /// Empty if no group is named. Thread-safe.
  std::string adminGroup() const;

  /// The group's number; nothing if the system knows no such group. Thread-safe.
  static std::optional<gid_t> numberOf(const std::string& group);

 private:
  LPARAMS::Server::ADMIN_t& settings_;
  const std::string adminGroup_;
};

}  // namespace agent
