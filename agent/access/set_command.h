// The agent's commands "set", which changes single parameters, by their names, and the user list,
// and "try", which tells what "set" would do.
#pragma once

#include <string>

#include "agent/access/saved_settings.h"
#include "agent/base/bridge_session.h"
#include "agent/bridge/command_service.h"
#include "bridge/protocol.h"
#include "editing/draft.h"
#include "editing/record_check.h"
#include "lparams/catalogue/catalogue.h"

namespace agent {

/// Carries out all steps of a change or none. Everything is checked before anything is written; a
/// group whose values stay what they are is not written. The module writes each group with its own
/// command, right after what it has in the file only was set. Thread-safe.
class SetCommand {
 public:
  /// REQUIRES: all of them outlive the command.
  SetCommand(LPARAMS::Server::Catalogue& settings, const editing::RecordCheck& check,
             SavedSettings& saved, CommandService& service)
      : settings_(settings), check_(check), saved_(saved), service_(service) {}

  bridge::Reply execute(BridgeSession& session, const std::string& input) const {
    return carryOut(session, input, Written);
  }

  /// The same to the last check, with the same answer, and nothing is written.
  bridge::Reply tryOut(BridgeSession& session, const std::string& input) const {
    return carryOut(session, input, Tried);
  }

 private:
  enum Extent { Written, Tried };

  bridge::Reply carryOut(BridgeSession& session, const std::string& input, Extent extent) const;
  bridge::Reply writeAll(BridgeSession& session, editing::Draft& draft) const;
  bridge::Reply writeGroup(BridgeSession& session, LPARAMS::Server::ParamGroup& values) const;

  LPARAMS::Server::Catalogue& settings_;
  const editing::RecordCheck& check_;
  SavedSettings& saved_;
  CommandService& service_;
};

}  // namespace agent
