// The settings behind the agent's bridge.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <utility>

#include "client/connection.h"
#include "client/store.h"

namespace client {

/// Connects with the first request, so that a command line with a mistake never reaches the agent.
class AgentStore final : public Store {
 public:
  AgentStore(std::string socketPath, std::chrono::seconds timeout)
      : socketPath_(std::move(socketPath)), timeout_(timeout) {}

  bridge::NamedValues get(const bridge::Names& names) override;
  bridge::NamedValues set(const bridge::NamedChanges& changes) override;
  bridge::NamedValues tryOut(const bridge::NamedChanges& changes) override;
  void save(const Saving& how) override;
  std::string schema() override;

  /// The agent's state, a JSON object.
  std::string status();

  /// Returns the reply to a request that has succeeded; `what` is what a message says has failed.
  bridge::Reply call(const bridge::Request& request, const std::string& what);

  /// Has the agent tell all that happens. Nothing follows but the other two, as Connection has
  /// them.
  void watch();
  bool waitForNotice(int output) { return connection_->waitForNotice(output); }
  bridge::Notice nextNotice() { return connection_->nextNotice(); }

 private:
  const std::string socketPath_;
  const std::chrono::seconds timeout_;
  std::optional<Connection> connection_;
};

/// The values in a reply's output; throws Failure if they are none.
bridge::NamedValues valuesIn(const bridge::Reply& reply);

}  // namespace client
