// The settings store behind the agent's bridge.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
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
  /// Refused if somebody else has written the group since it was read here.
  void write(LPARAMS::Server::ParamGroup& group);

  /// Has the agent write its settings file. `force` confirms what the agent would refuse otherwise.
  void save(bool force);

  /// The agent's state, a JSON object.
  std::string status();

  /// Has the agent send an event at each change of a group. Nothing but nextEvent follows.
  void subscribe();
  bridge::Event nextEvent() { return connection_->nextEvent(); }

 private:
  /// Returns the reply to a request that has succeeded; `what` is what a message says has failed.
  bridge::Reply call(const bridge::Request& request, const std::string& what);

  const std::string socketPath_;
  const std::chrono::seconds timeout_;
  std::optional<Connection> connection_;
  std::map<const LPARAMS::Server::ParamGroup*, uint64_t>
      revisions_;  // of the groups that were read
};

}  // namespace client
