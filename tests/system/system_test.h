// A test with an agent, its state directory and its socket.
#pragma once

#include <gtest/gtest.h>

#include <csignal>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/client/client_process.h"
#include "tests/module/temp_directory.h"
#include "tests/system/agent_process.h"
#include "tests/system/bridge_client.h"

namespace system_testing {

/// Each test has a directory of its own with an empty state directory. An agent that still runs at
/// the end of a test is stopped and has to end as it should.
class SystemTest : public testing::Test {
 protected:
  SystemTest();
  void TearDown() override;

  /// Options of the agent and their values.
  using Options = std::map<std::string, std::string>;

  /// The arguments for the test's state directory and socket, and others besides or instead, and
  /// the flags.
  std::vector<std::string> arguments(Options options = {}) const;

  /// Starts the agent and waits until it listens.
  void start(const Options& options = {});

  /// Ends the agent with the signal and expects that it ends as it should: status 0, no socket
  /// left.
  void stop(int signal = SIGTERM);

  /// Runs an agent that is not to come as far as to listen, to its end.
  int exitStatusOf(const std::vector<std::string>& arguments);

  /// A session with the agent, after the hellos.
  BridgeClient connect() const;

  /// Runs lparamsctl with the agent's socket.
  client_testing::Outcome ctl(std::vector<std::string> arguments) const;

  const host::TempDirectory directory;
  const std::string stateDir = directory.path + "state";
  const std::string settingsPath = stateDir + "/localsettings.ini";
  const std::string socketPath = directory.path + "agent.sock";
  std::vector<std::string> flags;  ///< options without a value, for every start
  std::optional<AgentProcess> agent;
};

/// A file of the source tree.
std::string sourceFile(const std::string& path);

/// The first line of the text that holds all the words; empty if there is none.
std::string lineWith(const std::vector<std::string>& lines, const std::vector<std::string>& words);

}  // namespace system_testing
