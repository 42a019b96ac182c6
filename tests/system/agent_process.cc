#include "tests/system/agent_process.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <system_error>
#include <thread>

#include "tests/module/temp_directory.h"
#include "tests/support/held_sync.h"
#include "tests/support/system_directory.h"

namespace system_testing {
namespace {

constexpr const char* PROGRAM = PRODUCTS_DIR "/lparams_agent";
constexpr std::chrono::milliseconds PAUSE{5};  // between two looks at the log

/// In the child, which only says what failed and leaves.
void check(int result, const char* what) {
  if (result >= 0) return;
  std::perror(what);
  _exit(127);
}

/// Lets tests hold a sync. A first start imports the settings of earlier versions that it finds on
/// the machine, and deletes them: the agent looks for them in a place where nothing is.
void standInForTheSystem() {
  static auto variables = testing_support::systemDirectoryAt("/nonexistent");
  variables[0] += std::string(":") + testing_support::HELD_SYNC;
  for (std::string& variable : variables) check(putenv(variable.data()), variable.c_str());
}

void redirect(int descriptor, const std::string& path) {
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  check(file, path.c_str());
  check(dup2(file, descriptor), path.c_str());
}

}  // namespace

AgentProcess::AgentProcess(const std::string& directory, std::vector<std::string> arguments)
    : logPath_(directory + "log"), outputPath_(directory + "output") {
  host::writeFile(logPath_, "");
  host::writeFile(outputPath_, "");
  start(std::move(arguments));
}

void AgentProcess::start(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), PROGRAM);
  std::vector<char*> argv;
  for (std::string& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);

  id_ = fork();
  if (id_ < 0) throw std::system_error(errno, std::generic_category(), "fork");
  if (id_ == 0) {
    redirect(STDERR_FILENO, logPath_);
    redirect(STDOUT_FILENO, outputPath_);
    check(prctl(PR_SET_PDEATHSIG, SIGKILL), "the test's end ends the agent");
    standInForTheSystem();
    check(execv(PROGRAM, argv.data()), PROGRAM);
  }
}

AgentProcess::~AgentProcess() {
  if (!runs()) return;
  signal(SIGKILL);
  (void)exitStatus();
}

bool AgentProcess::waitForLog(const std::string& text) {
  for (;;) {
    const bool running = runs();  // before the look: the last lines count
    if (log().find(text) != std::string::npos) return true;
    if (!running) return false;
    std::this_thread::sleep_for(PAUSE);
  }
}

void AgentProcess::signal(int number) const { (void)kill(id_, number); }

void AgentProcess::limitDescriptors(unsigned limit) const {
  rlimit limits{};
  if (prlimit(id_, RLIMIT_NOFILE, nullptr, &limits) == 0) {
    limits.rlim_cur = limit;
    if (prlimit(id_, RLIMIT_NOFILE, &limits, nullptr) == 0) return;
  }
  throw std::system_error(errno, std::generic_category(), "the agent's descriptors");
}

bool AgentProcess::runs() {
  int status = 0;
  if (!status_ && waitpid(id_, &status, WNOHANG) == id_) status_ = status;
  return !status_;
}

int AgentProcess::exitStatus() {
  if (!status_) {
    int status = 0;
    if (waitpid(id_, &status, 0) != id_) {
      throw std::system_error(errno, std::generic_category(), "waitpid");
    }
    status_ = status;
  }
  return WIFEXITED(*status_) ? WEXITSTATUS(*status_) : 128 + WTERMSIG(*status_);
}

std::string AgentProcess::log() const { return host::readFile(logPath_); }

std::vector<std::string> AgentProcess::logLines() const {
  std::istringstream text(log());
  std::vector<std::string> lines;
  for (std::string line; std::getline(text, line);) lines.push_back(line);
  return lines;
}

std::string AgentProcess::output() const { return host::readFile(outputPath_); }

}  // namespace system_testing
