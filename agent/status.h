// The agent's state, for operators and programs.
#pragma once

#include <chrono>
#include <string>

#include "agent/access/settings_hashes.h"
#include "agent/bridge/bridge_server.h"
#include "agent/bridge/socket_group.h"
#include "agent/confirmation/confirmation.h"
#include "agent/events/events.h"
#include "agent/history/history.h"
#include "agent/options.h"
#include "agent/state/settings_keeper.h"
#include "lparams/server.h"

namespace agent {

/// When the agent has begun to serve.
struct BeginOfService {
  /// Now. Made a text at once: the first time that is made one reads the system's time zone, and so
  /// no command does.
  BeginOfService();

  const std::string time;  ///< UTC
  const std::chrono::steady_clock::time_point tick = std::chrono::steady_clock::now();
};

/// Whose state it is.
struct StatusSources {
  const Options& options;
  LPARAMS::Server::Server_t& server;
  const SettingsKeeper& keeper;
  const History& history;
  const Confirmation::State confirmation;
  const BridgeServer& bridge;
  const SocketGroup& socketGroup;
  const Events& events;
  SettingsHashes& hashes;
  const BeginOfService& begin;
};

/// A JSON object; docs/bridge-protocol.md has its members. Hashes that include secrets are there
/// for who may write. Thread-safe.
std::string statusOf(const StatusSources& sources, bool mayWrite);

}  // namespace agent
