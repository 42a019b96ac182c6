// The agent's commands "set", which changes single parameters, by their names, and the user list,
// and "try", which tells what "set" would do.
#pragma once

#include <string>

#include "agent/access/group_writer.h"
#include "agent/access/saved_settings.h"
#include "agent/base/bridge_session.h"
#include "agent/bridge/command_service.h"
#include "bridge/named_values.h"
#include "bridge/protocol.h"
#include "editing/record_check.h"
#include "lparams/catalogue/catalogue.h"

namespace agent {

/// Carries out all steps of a change or none. Everything is checked before anything is written; a
/// group whose values stay what they are is not written. Thread-safe.
class SetCommand {
 public:
  /// REQUIRES: all of them outlive the command.
  SetCommand(LPARAMS::Server::Catalogue& settings, const editing::RecordCheck& check,
             SavedSettings& saved, CommandService& service)
      : settings_(settings),
        check_(check),
        saved_(saved),
        service_(service),
        writer_(settings, service) {}

  bridge::Reply execute(BridgeSession& session, const std::string& input) const {
    return carryOut(session, input, Written);
  }
  bridge::Reply execute(BridgeSession& session, const bridge::NamedChanges& changes) const {
    return carryOut(session, changes, Written);
  }

  /// The same to the last check, with the same answer, and nothing is written.
  bridge::Reply tryOut(BridgeSession& session, const std::string& input) const {
    return carryOut(session, input, Tried);
  }

 private:
  enum Extent { Written, Tried };

  bridge::Reply carryOut(BridgeSession& session, const std::string& input, Extent extent) const;
  bridge::Reply carryOut(BridgeSession& session, const bridge::NamedChanges& request,
                         Extent extent) const;

  LPARAMS::Server::Catalogue& settings_;
  const editing::RecordCheck& check_;
  SavedSettings& saved_;
  CommandService& service_;
  const GroupWriter writer_;
};

}  // namespace agent
