// Serves the bridge until the process is told to stop.
#pragma once

#include "agent/history/history.h"
#include "agent/options.h"
#include "agent/state/settings_keeper.h"
#include "lparams/server.h"

namespace agent {

/// Returns after SIGTERM or SIGINT, when every running command has been answered; ends the process
/// with EXIT_STUCK if that takes too long. Throws StartFailure if it cannot listen.
void serve(const Options& options, LPARAMS::Server::Server_t& server, SettingsKeeper& keeper,
           History& history);

}  // namespace agent
