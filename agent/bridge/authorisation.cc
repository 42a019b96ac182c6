#include "agent/bridge/authorisation.h"

#include <grp.h>

#include <algorithm>
#include <cerrno>
#include <utility>
#include <vector>

#include "agent/base/bridge_session.h"
#include "agent/base/log.h"
#include "agent/base/own_user.h"
#include "platform/command_bridge.h"

namespace agent {
namespace {

constexpr size_t MAX_GROUP_NAME = 256;  // bytes; eight times what groupadd(8) takes

const AccessRules* g_rules =
    nullptr;  // what the platform function asks; constant while sessions run

bool isMember(const BridgeSession& session, gid_t group) {
  return session.gid == group || std::ranges::find(session.groups, group) != session.groups.end();
}

}  // namespace

AccessRules::AccessRules(LPARAMS::Server::ADMIN_t& settings, std::string adminGroup)
    : settings_(settings), adminGroup_(std::move(adminGroup)) {
  g_rules = this;
}

AccessRules::~AccessRules() { g_rules = nullptr; }

std::string AccessRules::adminGroup() const {
  if (!adminGroup_.empty()) return adminGroup_;
  const basekit::ObjectLevelLockable::Lock lock(settings_.ADMIN_GROUP);
  return settings_.ADMIN_GROUP.value;
}

std::optional<gid_t> AccessRules::numberOf(const std::string& group) {
  // A service of the system may end the process over a name that is too long for it.
  if (group.size() > MAX_GROUP_NAME) return std::nullopt;
  std::vector<char> buffer(1024);
  ::group entry{};
  ::group* found = nullptr;
  while (::getgrnam_r(group.c_str(), &entry, buffer.data(), buffer.size(), &found) == ERANGE) {
    buffer.resize(buffer.size() * 2);
  }
  if (found == nullptr) return std::nullopt;
  return found->gr_gid;
}

}  // namespace agent

bool _BridgeServerSide_AuthSession(BridgeSession& session, ModuleIdType module, long level) {
  using agent::AccessRules;

  if (session.uid == 0 || agent::isOwnUser(session.uid)) return true;
  const std::string group = agent::g_rules == nullptr ? "" : agent::g_rules->adminGroup();
  if (level == 0 || level == 2) {
    const auto number = group.empty() ? std::nullopt : AccessRules::numberOf(group);
    if (number && agent::isKnownGroup(*number) && agent::isMember(session, *number)) return true;
  }
  session.command.refusal = "user " + std::to_string(session.uid) + " may not use module " +
                            std::to_string(module) + " at level " + std::to_string(level) +
                            "; the agent's user, root and the members of the group " +
                            agent::quoted(group) + " may";
  if (!agent::isKnownUser(session.uid)) {
    session.command.refusal += "; that number stands for every user without one of his own here";
  }
  return false;
}
