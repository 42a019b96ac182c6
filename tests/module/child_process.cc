#include "tests/module/child_process.h"

#include <poll.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <string>

#include "tests/module/temp_directory.h"

namespace host {
namespace {

/// Only for children that hang: far longer than anything that a test does.
constexpr std::chrono::seconds DEADLINE(60);

/// Does not return: the child leaves without the teardown that belongs to its parent.
[[noreturn]] void runAndLeave(const std::function<void()>& body) {
  int status = 0;
  try {
    body();
    status = testing::Test::HasFailure() ? 1 : 0;
  } catch (const std::exception& error) {
    std::printf("The child process ended with an exception: %s\n", error.what());
    status = 1;
  }
  std::fflush(nullptr);
  _exit(status);
}

/// A child process; killed, if it still runs, and waited for at the end.
class Child {
 public:
  explicit Child(const std::function<void()>& body) {
    std::fflush(nullptr);
    id_ = fork();
    if (id_ == 0) runAndLeave(body);
  }

  ~Child() {
    if (id_ > 0 && !ended_) {
      (void)kill(id_, SIGKILL);
      (void)waitpid(id_, nullptr, 0);
    }
  }

  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  /// Waits for the end of the child, no longer than the time. Returns whether it has ended.
  bool endsWithin(std::chrono::milliseconds time) {
    pollfd process{static_cast<int>(syscall(SYS_pidfd_open, id_, 0)), POLLIN, 0};
    ended_ =
        poll(&process, 1, static_cast<int>(time.count())) == 1 && waitpid(id_, &status_, 0) == id_;
    close(process.fd);
    return ended_;
  }

  /// Its exit status, -1 if a signal ended it. REQUIRES: it has ended.
  int status() const { return WIFEXITED(status_) ? WEXITSTATUS(status_) : -1; }

  std::string end() const {
    if (WIFSIGNALED(status_)) return "signal " + std::to_string(WTERMSIG(status_));
    return "status " + std::to_string(status());
  }

  /// The state of its one thread, as the kernel names it: "R" is running.
  char state() const {
    const std::string line = readFile("/proc/" + std::to_string(id_) + "/stat");
    return line.at(line.rfind(')') + 2);
  }

 private:
  pid_t id_ = -1;
  bool ended_ = false;
  int status_ = 0;
};

}  // namespace

void runInChild(const std::function<void()>& body) {
  Child child(body);
  if (!child.endsWithin(DEADLINE)) {
    ADD_FAILURE() << "the child process did not end in time";
  } else if (child.status() != 0) {
    ADD_FAILURE() << "the child process ended with " << child.end();
  }
}

testing::AssertionResult keepsBusyInChild(const std::function<void()>& body,
                                          std::chrono::milliseconds time) {
  Child child(body);
  if (child.endsWithin(time)) {
    return testing::AssertionFailure() << "the child process ended with " << child.end();
  }
  if (child.state() != 'R') {
    return testing::AssertionFailure() << "the child process is in state " << child.state();
  }
  return testing::AssertionSuccess();
}

int statusOfChild(const std::function<void()>& body) {
  Child child(body);
  return child.endsWithin(DEADLINE) ? child.status() : -1;
}

}  // namespace host
