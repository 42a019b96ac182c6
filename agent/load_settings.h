// The load of the settings at a start.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "agent/state/recovery.h"
#include "agent/state/state_directory.h"
#include "inspection/finding.h"
#include "lparams/server.h"

namespace agent {

struct LoadOutcome {
  std::string degradedReason;     ///< why the settings are not whole; empty if they are
  int reports;                    ///< that the load gave
  inspection::Findings findings;  ///< what was found in the text of the settings file
};

/// Has the module load its settings, and logs what it reports and what it changes in silence.
/// `importing` is how many bytes of settings of earlier versions there are, if any; more users than
/// `maxUsers` are a finding. REQUIRES: systemVarDir() answers the directory.
LoadOutcome loadSettings(LPARAMS::Server::Server_t& server, const StateDirectory& directory,
                         const StartingPoint& start, std::optional<size_t> importing,
                         size_t maxUsers);

}  // namespace agent
