// The commands that the agent itself carries out.
#pragma once

#include "agent/access/get_command.h"
#include "agent/access/saved_settings.h"
#include "agent/access/set_command.h"
#include "agent/bridge/command_service.h"
#include "agent/confirmation/confirmation.h"
#include "agent/history/history_commands.h"
#include "agent/state/settings_keeper.h"
#include "editing/record_check.h"
#include "lparams/server.h"

namespace agent {

/// Makes the service know them. REQUIRES: built before the first session, and outlives the last
/// one; all that it is given outlives it.
class AgentCommands {
 public:
  AgentCommands(LPARAMS::Server::Server_t& server, SettingsKeeper& keeper, const History& history,
                const editing::RecordCheck& check, CommandService& service);

  AgentCommands(const AgentCommands&) = delete;
  AgentCommands& operator=(const AgentCommands&) = delete;

  SavedSettings& saved() { return saved_; }
  Confirmation& confirmation() { return confirmation_; }

 private:
  SavedSettings saved_;
  const GetCommand get_;
  const SetCommand set_;
  HistoryCommands history_;
  Confirmation confirmation_;
};

}  // namespace agent
