// The agent's command line.
#pragma once

#include <optional>
#include <string>

namespace agent {

struct Options {
  std::string stateDir = "/var/lib/lparams";
  std::string socket = "/run/lparams/agent.sock";
  std::string module;  ///< lparams_server.so beside the agent's executable, unless given
};

/// Reads the command line. Without a value the process is done (help, version, or an error that has
/// been told) and `exitCode` is set.
std::optional<Options> readOptions(int argc, char** argv, int& exitCode);

}  // namespace agent
