// The settings store behind the agent's bridge.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "client/connection.h"
#include "lparams/params/param_group.h"

namespace client {

/// Connects with the first command, so that a command line with a mistake never reaches the agent.
/// Each operation throws Failure with the agent's reason if it is refused.
class Store {
 public:
  Store(std::string socketPath, std::chrono::seconds timeout)
      : socketPath_(std::move(socketPath)), timeout_(timeout) {}

  /// Fills the group with the agent's values.
  void read(LPARAMS::Server::ParamGroup& group);

  /// Makes the group's values the agent's. In memory only: the settings file follows with save.
  void write(LPARAMS::Server::ParamGroup& group);

  /// Has the agent write its settings file.
  void save();

 private:
  /// Returns the output of the command; `what` is what a message says has failed.
  std::string call(int32_t command, std::string input, const std::string& what);

  const std::string socketPath_;
  const std::chrono::seconds timeout_;
  std::optional<Connection> connection_;
};

}  // namespace client
