// What the command line says to all verbs.
#pragma once

#include <memory>
#include <string>

#include "client/agent_store.h"
#include "programs/exit_status.h"

namespace client {

/// The global options, and the stores that they lead to. Each store is made when a verb first asks
/// for it.
struct Context {
  std::string socketPath = "/run/lparams/agent.sock";
  unsigned timeout = 30;  ///< in seconds, for the agent's answers
  std::string file = {};  ///< the settings file in place of an agent; empty for the agent

  programs::ExitStatus status = programs::EXIT_OK;  ///< of a verb that has succeeded

  /// The settings that the command line is for.
  Store& store();

  /// For what only an agent has; throws Failure if the command line is for a file.
  AgentStore& agent();

 private:
  std::unique_ptr<AgentStore> agent_;
  std::unique_ptr<Store> inFile_;
};

}  // namespace client
