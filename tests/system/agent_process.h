// The agent as a process of its own.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace system_testing {

/// Starts the agent and keeps what it writes. The machine's own settings are hidden from it.
class AgentProcess {
 public:
  /// What the agent writes goes to files in the directory, which ends in "/".
  AgentProcess(const std::string& directory, std::vector<std::string> arguments);

  /// Kills the agent if it still runs.
  ~AgentProcess();

  AgentProcess(const AgentProcess&) = delete;
  AgentProcess& operator=(const AgentProcess&) = delete;

  /// Waits until the log holds the text. Returns false if the process has ended without it.
  bool waitForLog(const std::string& text);

  void signal(int number) const;

  /// The number of descriptors below which the agent's next one has to be.
  void limitDescriptors(unsigned limit) const;

  /// True until the process has ended.
  bool runs();

  /// Waits for the end of the process. The exit status, or 128 and the number of the signal that
  /// ended it.
  int exitStatus();

  /// The standard error stream so far, as a whole and by lines.
  std::string log() const;
  std::vector<std::string> logLines() const;

  /// The standard output so far.
  std::string output() const;

 private:
  void start(std::vector<std::string> arguments);

  const std::string logPath_;
  const std::string outputPath_;
  pid_t id_ = -1;
  std::optional<int> status_;  // as waitpid tells it, once the process has ended
};

}  // namespace system_testing
