// The settings store behind the agent's bridge.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <utility>

#include "bridge/named_values.h"
#include "client/connection.h"

namespace client {

/// Connects with the first command, so that a command line with a mistake never reaches the agent.
/// Each operation throws Failure with the agent's reason if it is refused. Settings go by their
/// names: what the agent's catalogue holds need not be known here.
class Store {
 public:
  Store(std::string socketPath, std::chrono::seconds timeout)
      : socketPath_(std::move(socketPath)), timeout_(timeout) {}

  /// The agent's values of these parameters, groups and users; all if nothing is named.
  bridge::NamedValues get(const bridge::Names& names);

  /// Carries out all of the changes, or none. In memory only: the settings file follows with save.
  bridge::NamedValues set(const bridge::NamedChanges& changes);

  /// The agent's catalogue, a JSON object.
  std::string schema();

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
};

}  // namespace client
