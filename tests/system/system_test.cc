#include "tests/system/system_test.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <stdexcept>

namespace system_testing {

SystemTest::SystemTest() {
  std::filesystem::create_directory(stateDir);
  std::filesystem::permissions(stateDir, std::filesystem::perms::owner_all);
}

void SystemTest::TearDown() {
  if (agent && agent->runs()) stop();
  if (agent && HasFailure()) std::cout << "The agent's log:\n" << agent->log();
}

std::vector<std::string> SystemTest::arguments(Options options) const {
  options.insert({{"--state-dir", stateDir}, {"--socket", socketPath}});
  std::vector<std::string> arguments = flags;
  for (const auto& [option, value] : options) arguments.insert(arguments.end(), {option, value});
  return arguments;
}

void SystemTest::start(const Options& options) {
  agent.emplace(directory.path, arguments(options));
  if (!agent->waitForLog("info: listening ")) {
    throw std::runtime_error("the agent does not listen: " + agent->log());
  }
}

void SystemTest::stop(int signal) {
  agent->signal(signal);
  EXPECT_EQ(agent->exitStatus(), 0) << agent->log();
  EXPECT_FALSE(host::exists(socketPath));
}

int SystemTest::exitStatusOf(const std::vector<std::string>& arguments) {
  agent.emplace(directory.path, arguments);
  return agent->exitStatus();
}

BridgeClient SystemTest::connect() const {
  BridgeClient client(socketPath);
  if (!client.greet()) throw std::runtime_error("the agent does not answer the hello");
  return client;
}

client_testing::Outcome SystemTest::ctl(std::vector<std::string> arguments) const {
  arguments.insert(arguments.begin(), {"--socket", socketPath});
  return client_testing::runClient(std::move(arguments));
}

std::string sourceFile(const std::string& path) {
  return host::readFile(std::string(SOURCE_DIR "/") + path);
}

std::string lineWith(const std::vector<std::string>& lines, const std::vector<std::string>& words) {
  const auto found = std::ranges::find_if(lines, [&](const std::string& line) {
    return std::ranges::all_of(
        words, [&](const std::string& word) { return line.find(word) != std::string::npos; });
  });
  return found == lines.end() ? "" : *found;
}

}  // namespace system_testing
