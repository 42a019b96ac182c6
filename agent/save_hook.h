// Leads the bridge's save command to the keeper, and on to the history.
#pragma once

#include "agent/history/history.h"
#include "agent/state/settings_keeper.h"
#include "lparams/server.h"

namespace agent {

/// Sets the root's save hook, and takes it away again. REQUIRES: one exists at a time; built before
/// the first command and destroyed after the last one.
class SaveHook {
 public:
  SaveHook(LPARAMS::Server::Server_t& server, SettingsKeeper& keeper, History& history);
  ~SaveHook();

  SaveHook(const SaveHook&) = delete;
  SaveHook& operator=(const SaveHook&) = delete;

 private:
  LPARAMS::Server::Server_t& server_;
};

}  // namespace agent
