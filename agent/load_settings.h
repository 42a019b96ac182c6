// The load of the settings at a start.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "agent/state/recovery.h"
#include "agent/state/state_directory.h"
#include "lparams/server.h"

namespace agent {

/// Has the module load its settings and logs what it reports. `importing` is how many bytes of
/// settings of earlier versions there are, if any. Returns why the settings are not whole; empty if
/// they are. REQUIRES: systemVarDir() answers the directory.
std::string loadSettings(LPARAMS::Server::Server_t& server, const StateDirectory& directory,
                         const StartingPoint& start, std::optional<size_t> importing);

}  // namespace agent
