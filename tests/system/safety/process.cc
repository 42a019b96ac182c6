#include "tests/system/safety/process.h"

#include <fcntl.h>
#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <system_error>

#include "tests/support/readable_bytes.h"

namespace safety {
namespace {

constexpr unsigned DEADLINE = 100;  // seconds; only a program that hangs sees it

/// Bytes. A program whose output nobody reads for a while must not wait for that.
constexpr int PIPE_SIZE = 1024 * 1024;

void require(bool success, const char* what) {
  if (!success) throw std::system_error(errno, std::generic_category(), what);
}

/// What the child of a fork does instead of the test.
[[noreturn]] void become(std::vector<std::string>& arguments, const Surroundings& surroundings,
                         int output) {
  (void)::dup2(output, STDOUT_FILENO);
  (void)::dup2(output, STDERR_FILENO);
  (void)::close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);  // what the test inherited
  (void)::alarm(DEADLINE);
  for (const std::string& variable : surroundings.environment) {
    const size_t equals = variable.find('=');
    (void)::setenv(variable.substr(0, equals).c_str(), variable.c_str() + equals + 1, 1);
  }
  surroundings.inChild();
  std::vector<char*> argv;
  for (std::string& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);
  (void)::execv(argv[0], argv.data());
  ::_exit(127);
}

}  // namespace

Process::Process(std::vector<std::string> arguments, const Surroundings& surroundings) {
  int ends[2];
  require(::pipe2(ends, O_CLOEXEC) == 0, "pipe");
  require(::fcntl(ends[0], F_SETPIPE_SZ, PIPE_SIZE) >= PIPE_SIZE, "F_SETPIPE_SZ");
  pid_ = ::fork();
  require(pid_ >= 0, "fork");
  if (pid_ == 0) become(arguments, surroundings, ends[1]);
  (void)::close(ends[1]);
  pipe_ = ends[0];
}

Process::~Process() {
  if (!ended_) {
    send(SIGKILL);
    (void)wait();
  }
  (void)::close(pipe_);
}

bool Process::readMore() {
  char buffer[4096];
  const ssize_t size = ::read(pipe_, buffer, sizeof buffer);
  if (size <= 0) return false;
  output_.append(buffer, static_cast<size_t>(size));
  return true;
}

bool Process::waitFor(const std::string& text) {
  while (output_.find(text) == std::string::npos) {
    if (!readMore()) return false;
  }
  return true;
}

int Process::wait() {
  if (ended_) return result_;
  while (readMore()) continue;
  int status = 0;
  (void)::waitpid(pid_, &status, 0);
  ended_ = true;
  result_ = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  return result_;
}

void Process::send(int signal) const { (void)::kill(pid_, signal); }

std::ostream& operator<<(std::ostream& os, const Outcome& outcome) {
  return os << "exit code " << outcome.exitCode << ", output "
            << testing_support::inQuotes(outcome.output);
}

Outcome run(const std::vector<std::string>& arguments, const Surroundings& surroundings) {
  Process process(arguments, surroundings);
  const int exitCode = process.wait();
  return {exitCode, process.output()};
}

std::string asUser(uid_t uid, gid_t gid, const std::vector<gid_t>& groups,
                   const std::function<std::string()>& function) {
  int ends[2];
  require(::pipe2(ends, O_CLOEXEC) == 0, "pipe");
  const pid_t child = ::fork();
  require(child >= 0, "fork");
  if (child == 0) {
    (void)::alarm(DEADLINE);
    if (::setgroups(groups.size(), groups.data()) != 0 || ::setgid(gid) != 0 ||
        ::setuid(uid) != 0) {
      ::_exit(1);
    }
    std::string result;
    try {
      result = function();
    } catch (const std::exception& error) {
      result = error.what();
    }
    (void)!::write(ends[1], result.data(), result.size());
    ::_exit(0);
  }
  (void)::close(ends[1]);
  std::string result;
  char buffer[4096];
  for (ssize_t size; (size = ::read(ends[0], buffer, sizeof buffer)) > 0;) {
    result.append(buffer, static_cast<size_t>(size));
  }
  (void)::close(ends[0]);
  int status = 0;
  (void)::waitpid(child, &status, 0);
  return status == 0 ? result : "(failed)";
}

}  // namespace safety
