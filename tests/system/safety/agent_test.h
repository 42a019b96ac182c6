// The real agent with its module and its client, on directories of one test.
#pragma once

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/agent/bridge/raw_client.h"
#include "tests/agent/state/scratch_directory.h"
#include "tests/system/safety/process.h"

namespace safety {

inline constexpr const char* AGENT = PRODUCTS_DIR "/lparams_agent";

inline const char* const SETTINGS = "localsettings.ini";
inline const char* const SHADOW_COPY = "localsettings.ini.good";
inline const char* const BACKUP = "localsettings.ini.bak";

using Arguments = std::vector<std::string>;

class AgentTest : public testing::Test {
 protected:
  AgentTest() { (void)::chmod(place_.path.c_str(), 0711); }  // others may pass through

  /// Starts the agent and waits until it serves.
  void start(const Arguments& options = {}, const Surroundings& surroundings = {}) {
    agent_.emplace(commandLine(options), surroundings);
    ASSERT_TRUE(agent_->waitFor(" listening ")) << agent_->output();
  }

  /// Runs an agent that does not get so far as to serve.
  Outcome runAgent(const Arguments& options = {}, const Surroundings& surroundings = {}) {
    return safety::run(commandLine(options), surroundings);
  }

  /// Expects that the agent does not start.
  void expectRefusal(int exitCode, const std::string& message, const Arguments& options = {}) {
    EXPECT_EQ(runAgent(options), (Outcome{exitCode, "lparams_agent: error: " + message + "\n"}));
  }

  int stop() { return end(SIGTERM); }
  void kill() { EXPECT_EQ(end(SIGKILL), -SIGKILL); }

  int end(int signal) {
    agent_->send(signal);
    return agent_->wait();
  }

  /// Runs lparamsctl.
  Outcome ctl(Arguments arguments) {
    arguments.insert(arguments.begin(), {PRODUCTS_DIR "/lparamsctl", "--socket", socket_});
    return safety::run(arguments);
  }

  void set(const std::string& assignment) { EXPECT_EQ(ctl({"set", assignment}).exitCode, 0); }
  std::string get(const std::string& name) { return ctl({"get", name}).output; }
  void save() { EXPECT_EQ(ctl({"save"}), (Outcome{0, "saved\n"})); }

  /// The value behind "NAME: " in the state.
  std::string state(const std::string& name) {
    const std::string lines = "\n" + ctl({"status"}).output;
    const std::string head = "\n" + name + ": ";
    const size_t at = lines.find(head);
    if (at == std::string::npos) return "(none)";
    const size_t begin = at + head.size();
    return lines.substr(begin, lines.find('\n', begin) - begin);
  }

  const std::string& log() const { return agent_->output(); }
  bool logTells(const std::string& text) { return agent_->waitFor(text); }

  Arguments commandLine(const Arguments& options) const {
    Arguments arguments = {AGENT, "--state-dir", state_.path, "--socket", socket_};
    for (const std::string& option : options) {
      // One that is given again is meant to be given once.
      if (option == "--socket") arguments.resize(3);
      arguments.push_back(option);
    }
    return arguments;
  }

  const agent_testing::ScratchDirectory state_;
  const agent_testing::ScratchDirectory place_;
  const std::string socket_ = place_.at("run/agent.sock");  // the agent makes the directory
  std::optional<Process> agent_;
};

/// A file that is complete and lacks groups.
inline std::string settingsWithoutGroups() {
  return "/ROOT=\n    /LOG=\n        BACKUP_DEPTH=7\n    end=\nend=\n";
}

}  // namespace safety
