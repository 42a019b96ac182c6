// What the bridge does with a request.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "agent/base/bridge_session.h"
#include "agent/base/write_turn.h"
#include "agent/bridge/change_tracker.h"
#include "agent/bridge/record_check.h"
#include "bridge/protocol.h"
#include "lparams/catalogue/catalogue.h"

namespace agent {

/// Stands in front of the modules: checks writes of settings and their revisions, puts what went
/// wrong into words, and tells the log of every write, save and refusal. Thread-safe; commands run
/// side by side, writes of settings take turns.
class CommandService {
 public:
  /// `settings` are those of the module. `check` may be null: then every value is taken as it
  /// stands. `status` returns the agent's state as a JSON object. REQUIRES: all of them outlive the
  /// service.
  CommandService(const LPARAMS::Server::Catalogue& settings, WriteTurn& writeTurn,
                 ChangeTracker& changes, const RecordCheck* check,
                 std::function<std::string()> status)
      : settings_(settings),
        writeTurn_(writeTurn),
        changes_(changes),
        check_(check),
        status_(std::move(status)) {}

  bridge::Reply execute(BridgeSession& session, const bridge::Command& command);

  /// What carries out a command of the agent itself, with the command's input. Thread-safe.
  using Handler = std::function<bridge::Reply(BridgeSession& session, const std::string& input)>;

  /// Makes the agent know a command. Call before the first session.
  void add(const std::string& name, Handler handler) { handlers_[name] = std::move(handler); }

  bridge::Reply execute(BridgeSession& session, const bridge::AgentCommand& command) const;

  bridge::Reply status() const;
  ChangeTracker& changes() { return changes_; }

 private:
  bridge::Reply readGroup(BridgeSession& session, const bridge::Command& command);
  bridge::Reply writeGroup(BridgeSession& session, const bridge::Command& command);
  bridge::Reply carryOut(BridgeSession& session, const bridge::Command& command,
                         std::string_view name);

  const LPARAMS::Server::Catalogue& settings_;
  WriteTurn& writeTurn_;  ///< held from the look at a revision to the end of the write
  ChangeTracker& changes_;
  const RecordCheck* const check_;
  const std::function<std::string()> status_;
  std::map<std::string, Handler> handlers_;  ///< by the command's name; constant during sessions
};

}  // namespace agent
