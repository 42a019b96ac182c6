// The agent's command "get": values of single parameters, by their names.
#pragma once

#include <string>

#include "agent/access/saved_settings.h"
#include "agent/base/bridge_session.h"
#include "agent/bridge/command_service.h"
#include "bridge/protocol.h"
#include "lparams/catalogue/catalogue.h"

namespace agent {

/// Answers with the values of the named parameters, of the whole groups and users that are named,
/// or of all if nothing is. All values are of one moment. Thread-safe.
class GetCommand {
 public:
  /// REQUIRES: all of them outlive the command.
  GetCommand(LPARAMS::Server::Catalogue& settings, SavedSettings& saved, CommandService& service)
      : settings_(settings), saved_(saved), service_(service) {}

  bridge::Reply execute(BridgeSession& session, const std::string& input) const;

 private:
  LPARAMS::Server::Catalogue& settings_;
  SavedSettings& saved_;
  CommandService& service_;
};

}  // namespace agent
