// The agent's bridge and paths service for a process that loads the module: every call is recorded,
// and a test can step in.
#pragma once

#include <atomic>
#include <functional>
#include <string>

#include "platform/command_bridge.h"

/// The tests tell sessions apart by a number.
class BridgeSession {
 public:
  int number = 0;
};

namespace host {

/// Set up before the module is loaded or used; only `authorised` may change while threads run.
struct PlatformServices {
  /// What systemVarDir() answers.
  std::string varDir;
  /// Called by systemVarDir() before it answers; may throw.
  std::function<void()> onVarDir;

  /// What an authorisation answers.
  std::atomic<bool> authorised = true;

  /// The listener that is registered, if any. The module owns it.
  CommandListener* listener = nullptr;
  /// Called when a listener is registered or taken back; the first may throw.
  std::function<void(CommandListener&)> onAdd;
  std::function<void(CommandListener&)> onDel;
};

/// The one state of the services. A test resets it by building a new LoadedModule.
PlatformServices& platform();

/// Back to services that answer with this directory and authorise everything.
void resetPlatform(const std::string& varDir);

}  // namespace host
