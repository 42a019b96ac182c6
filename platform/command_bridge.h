// The agent's command bridge, as a module sees it: listeners, sessions and their authorisation.
// The agent's executable defines and exports the functions; a module only calls them.
#pragma once

#include <string>

// The agent exports what is declared here to the modules that it loads.
#pragma GCC visibility push(default)

/// Identifies a module on the bridge.
enum ModuleIdType : int {
  LPARAMS_MODULE_ID = 13,
};

/// One client's session on the bridge. Defined by the agent; opaque to modules, which only pass it
/// on to the functions below.
class BridgeSession;

/// A module's end of the bridge. A module derives from it, registers one object with
/// AddCommandListener and serves commands until it takes the object back with DelCommandListener.
/// The order of the virtual operations is part of the interface.
class CommandListener {
 public:
  explicit CommandListener(ModuleIdType module = {}) : moduleId(module) {}
  virtual ~CommandListener() = default;

  CommandListener(const CommandListener&) = delete;
  CommandListener& operator=(const CommandListener&) = delete;

  /// Executes the command `cmd` with the input bytes `in` and appends the reply to `out`.
  /// Returns a truth value: 0 for failure or refusal, non-zero for success. May throw a
  /// `const char*` that names a malformed input; the bridge then fails the command.
  /// Called on the bridge's threads, several at a time.
  virtual int ExecCommand(BridgeSession& session, long cmd, const std::string& in,
                          std::string& out) = 0;

  // Session callbacks; what a listener does not need it leaves empty.
  virtual void OnOpenSession(BridgeSession* /*session*/) {}
  virtual void OnCloseSession(BridgeSession* /*session*/) {}
  virtual void OnOpenFirstSession() {}
  virtual void OnCloseLastSession() {}
  virtual void OnCloseLastSessionWithUser(BridgeSession* /*session*/) {}

  /// The bridge's identifier of the module that this listener serves. Set once, before the
  /// listener is registered.
  ModuleIdType moduleId;
};

/// Registers a listener; the bridge keeps the pointer, not the object. Thread-safe.
void AddCommandListener(CommandListener* listener);

/// Takes a listener back. After the return the bridge does not call it any more. Thread-safe.
void DelCommandListener(CommandListener* listener);

/// True when the session may use the module at the access level. Thread-safe.
bool _BridgeServerSide_AuthSession(BridgeSession& session, ModuleIdType module, long level);

#pragma GCC visibility pop
