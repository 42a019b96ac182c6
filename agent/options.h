// The agent's command line.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "lparams/values/values.h"

namespace agent {

struct Options {
  std::string stateDir = "/var/lib/lparams";
  std::string socket = "/run/lparams/agent.sock";
  std::string module;      ///< lparams_server.so beside the agent's executable, unless given
  std::string adminGroup;  ///< the one that the settings name, unless given
  size_t maxUsers = LPARAMS::Server::MAX_USERS;
  size_t history = 50;         ///< so many revisions are kept
  bool acceptAny = false;      ///< writes reach the module unchecked
  bool allowDefaults = false;  ///< start on defaults although damaged settings were found
  bool saveOnExit = false;
  bool journal = false;
};

/// Reads the command line; its paths become absolute. Nothing if the process is done: it has
/// printed its help or version. Throws StartFailure at a mistake.
std::optional<Options> readOptions(int argc, char** argv);

}  // namespace agent
