// Starts of the agent up to where it would serve, with the module inside. Reads the paths of state
// directories, one a line. For each, a process of its own starts there, with its log in PATH.log
// and the settings that it would serve in PATH.served; its status is written as a line: 0, 1 if it
// is degraded, 2 if it does not start, or 128 and the number of a signal.
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <fstream>
#include <iostream>
#include <optional>
#include <string>

#include "agent/base/log.h"
#include "agent/load_settings.h"
#include "agent/services/paths_service.h"
#include "agent/state/recovery.h"
#include "agent/state/settings_keeper.h"
#include "agent/state/state_directory.h"
#include "inspection/settings_text.h"
#include "lparams/module_objects.h"

namespace {

enum Status { Served = 0, Degraded = 1, Refused = 2, Signal = 128 };

/// As the agent's main program does it.
Status start(const std::string& path) {
  const agent::StateDirectory directory(path);
  agent::StartingPoint start = agent::prepareStart(directory, false);
  std::optional<size_t> importing;
  if (start.source == agent::StartingPoint::FirstStart) {
    importing = agent::keepLegacySettings(directory);
  }
  agent::setSystemVarDir(directory.path());
  LPARAMS::Server::Server_t& server = *LPARAMS::server;
  constexpr size_t MAX_USERS = 4096;  // as without an option
  agent::LoadOutcome loaded = agent::loadSettings(server, directory, start, importing, MAX_USERS);
  agent::SettingsKeeper keeper(server, directory, MAX_USERS);
  keeper.adopt(std::move(start), std::move(loaded.degradedReason), loaded.reports,
               std::move(loaded.findings));
  std::ofstream(path + ".served", std::ios::binary) << inspection::textOf(server);
  return keeper.state().degradedReason.empty() ? Served : Degraded;
}

[[noreturn]] void startAndEnd(const std::string& path) {
  const int file = ::open((path + ".log").c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  if (file < 0 || ::dup2(file, STDERR_FILENO) < 0) ::_exit(Refused);
  try {
    ::_exit(start(path));
  } catch (const std::exception& error) {
    agent::log(agent::Level::Error, error.what());
    ::_exit(Refused);
  }
}

}  // namespace

int main() {
  for (std::string path; std::getline(std::cin, path);) {
    const pid_t child = ::fork();
    if (child < 0) {
      std::perror("fork");
      return 1;
    }
    if (child == 0) startAndEnd(path);
    int status = 0;
    if (::waitpid(child, &status, 0) != child) return 1;
    std::cout << (WIFEXITED(status) ? WEXITSTATUS(status) : Signal + WTERMSIG(status)) << std::endl;
  }
}
