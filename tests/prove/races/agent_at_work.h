// An agent in this process, which can be started and stopped as often as is wanted.
#pragma once

#include <string>
#include <thread>

#include "agent/history/history.h"
#include "agent/module.h"
#include "agent/options.h"
#include "agent/save_hook.h"
#include "agent/state/settings_keeper.h"
#include "agent/state/state_directory.h"
#include "tests/module/temp_directory.h"

namespace races {

/// Its settings, at their defaults, and its state directory are the same over all starts. One
/// exists, and it is built before other threads. REQUIRES: the end signals are held.
class AgentAtWork {
 public:
  explicit AgentAtWork(const std::string& module);

  /// Starts it, and returns when it serves clients. REQUIRES: it does not run.
  void start();

  /// Asks it to end. May be called at any time, more than once. Thread-safe.
  static void stop();

  /// Returns when it has ended. REQUIRES: stop() has been called since it was started.
  void waitForEnd() { thread_.join(); }

  LPARAMS::Server::Server_t& server() const { return module_.server(); }
  const std::string& socket() const { return options_.socket; }

 private:
  const host::TempDirectory files_;
  const agent::StateDirectory directory_;
  const agent::Module module_;
  const agent::Options options_;
  agent::SettingsKeeper keeper_;
  agent::History history_;
  const agent::SaveHook hook_;
  std::thread thread_;
};

}  // namespace races
