// Who may do what on the bridge.
#include <unistd.h>

#include "agent/bridge_session.h"
#include "platform/command_bridge.h"

/// The agent's own user and root have every level of every module.
bool _BridgeServerSide_AuthSession(BridgeSession& session, ModuleIdType module, long level) {
  if (session.uid == 0 || session.uid == ::geteuid()) return true;
  session.refusal = "user " + std::to_string(session.uid) + " has no access at level " +
                    std::to_string(level) + " to module " + std::to_string(module) +
                    "; the agent's own user and root have it";
  return false;
}
