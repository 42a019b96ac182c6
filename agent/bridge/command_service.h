// What the bridge does with a request.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "agent/base/bridge_session.h"
#include "agent/base/write_turn.h"
#include "agent/bridge/change_tracker.h"
#include "agent/events/events.h"
#include "agent/events/group_values.h"
#include "bridge/protocol.h"
#include "editing/record_check.h"
#include "lparams/catalogue/catalogue.h"

namespace agent {

/// Stands in front of the modules: checks writes of settings and their revisions, keeps secrets
/// from who may not write, puts what went wrong into words, and tells the log and those who watch
/// of every write, save and refusal. Thread-safe; commands run side by side, writes of settings
/// take turns.
class CommandService {
 public:
  /// `settings` are those of the module. `check` may be null: then every value is taken and given
  /// as it stands. `status` returns the agent's state as a JSON object, for a session that may
  /// write or for one that may not. REQUIRES: all of them outlive the service.
  CommandService(const LPARAMS::Server::Catalogue& settings, WriteTurn& writeTurn,
                 ChangeTracker& changes, const editing::RecordCheck* check,
                 std::function<std::string(bool mayWrite)> status)
      : settings_(settings),
        writeTurn_(writeTurn),
        changes_(changes),
        check_(check),
        status_(std::move(status)) {}

  bridge::Reply execute(BridgeSession& session, const bridge::Command& command);

  /// What carries out a command of the agent itself, with the command's input. Thread-safe.
  using Handler = std::function<bridge::Reply(BridgeSession& session, const std::string& input)>;

  enum class Access {
    Writes,  ///< or saves, at least: who watches is told if it is refused
    Reads,
  };

  /// Makes the agent know a command. Call before the first session.
  void add(const std::string& name, Handler handler, Access access = Access::Writes) {
    handlers_[name] = {std::move(handler), access};
  }

  bridge::Reply execute(BridgeSession& session, const bridge::AgentCommand& command);

  bridge::Reply status(BridgeSession& session) const;

  /// Of a request that there is no room for, or for whose reply there is none.
  static bridge::Reply busy(const BridgeSession& session);

  ChangeTracker& changes() { return changes_; }

  /// Writes and refusals are published here.
  Events& events() { return events_; }

  // For commands of the agent that read or write settings. The write turn is theirs to hold from
  // the look at a revision to the end of the last write.

  WriteTurn& writeTurn() { return writeTurn_; }

  /// Has the module carry out its save command, with a message for the history. The revision that
  /// this has made is `session.command.revision`.
  static bridge::Reply save(BridgeSession& session, bool force, const std::string& message);

  /// Whether the session may write settings; if not, its `command.refusal` says why.
  static bool mayWrite(BridgeSession& session);

  /// The reply to who has read the group at a revision that it does not have any more.
  std::optional<bridge::Reply> conflictOf(std::string_view group, uint64_t stated) const;

  /// Has the module carry out its write command, right behind `prepare`. REQUIRES: the input has
  /// been checked, the session may write, and the write turn is held.
  bridge::Reply write(
      BridgeSession& session, const std::string& input,
      const std::function<void()>& prepare = [] {});

 private:
  struct NamedHandler {
    Handler execute;
    Access access = Access::Writes;
  };

  bridge::Reply refused(const BridgeSession& session, bridge::Reply reply,
                        Access access = Access::Writes);
  void tellOfWrite(const BridgeSession& session, const GroupValues& before,
                   LPARAMS::Server::ParamGroup& group, const bridge::Reply& reply) noexcept;
  bridge::Reply readGroup(BridgeSession& session, const bridge::Command& command);
  bridge::Reply writeGroup(BridgeSession& session, const bridge::Command& command);
  static void hideSecrets(BridgeSession& session, std::string_view group, bridge::Reply& reply);

  const LPARAMS::Server::Catalogue& settings_;
  WriteTurn& writeTurn_;  ///< held from the look at a revision to the end of the write
  Mutex readTurn_;        ///< held while a group is read
  ChangeTracker& changes_;
  const editing::RecordCheck* const check_;
  const std::function<std::string(bool mayWrite)> status_;
  Events events_;
  std::map<std::string, NamedHandler> handlers_;  ///< by the command's name; constant in sessions
};

}  // namespace agent
