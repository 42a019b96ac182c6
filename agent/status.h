// The agent's state, for operators and programs.
#pragma once

#include <string>

#include "agent/bridge/bridge_server.h"
#include "agent/bridge/socket_group.h"
#include "agent/history/history.h"
#include "agent/options.h"
#include "agent/state/settings_keeper.h"
#include "lparams/server.h"

namespace agent {

/// A JSON object: version, stateDir, pid, strict, catalogue (its hash), degraded (null or why),
/// changed, lastSave (null or UTC), lastFailure (null or why), history (the newest revision's
/// number), historyProblem (null or what), sessions, groupProblem (null or why
/// the administrators' group cannot reach the socket), logClosed, findings (their
/// number) and findingList (the first of them, each an object of texts). Thread-safe.
std::string statusOf(const Options& options, LPARAMS::Server::Server_t& server,
                     const SettingsKeeper& keeper, const History& history,
                     const BridgeServer& bridge, const SocketGroup& socketGroup);

}  // namespace agent
