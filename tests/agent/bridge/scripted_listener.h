// A listener that does what a test wants it to.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "agent/base/bridge_session.h"
#include "platform/command_bridge.h"

namespace agent_testing {

inline constexpr ModuleIdType MODULE{77};

class ScriptedListener : public CommandListener {
 public:
  /// What a command does; it sees the number of the command, its input and its output.
  using Script = std::function<int(long cmd, const std::string& in, std::string& out)>;

  explicit ScriptedListener(Script script = {}, ModuleIdType module = MODULE)
      : script_(std::move(script)) {
    moduleId = module;
  }

  int ExecCommand(BridgeSession& /*session*/, long cmd, const std::string& in,
                  std::string& out) override {
    return script_ ? script_(cmd, in, out) : 1;
  }

  void OnOpenSession(BridgeSession* session) override { note("open", session); }
  void OnCloseSession(BridgeSession* session) override { note("close", session); }
  void OnOpenFirstSession() override { events.emplace_back("first of all"); }
  void OnCloseLastSession() override { events.emplace_back("last of all"); }
  void OnCloseLastSessionWithUser(BridgeSession* session) override {
    note("last of user", session);
  }

  /// The session callbacks, in order: "open 1000/7" for process 7 of user 1000.
  std::vector<std::string> events;

 private:
  void note(const std::string& what, const BridgeSession* session) {
    events.push_back(what + " " + std::to_string(session->uid) + "/" +
                     std::to_string(session->pid));
  }

  const Script script_;
};

}  // namespace agent_testing
