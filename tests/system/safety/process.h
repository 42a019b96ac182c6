// A program that a test starts.
#pragma once

#include <sys/types.h>

#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace safety {

struct Surroundings {
  std::vector<std::string> environment = {};  ///< "NAME=VALUE", besides what is inherited
  std::function<void()> inChild = [] {};      ///< runs in the child before the program
};

/// Runs until its end, or until its destruction kills it.
class Process {
 public:
  explicit Process(std::vector<std::string> arguments, const Surroundings& surroundings = {});
  ~Process();

  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  /// Waits until the text has been written to the standard output or error stream. Returns false
  /// if the program ends before.
  bool waitFor(const std::string& text);

  /// Waits for the end. Returns the exit code, or the number of the signal behind a minus.
  int wait();

  void send(int signal) const;

  /// Everything that has been read from the two streams, in its order.
  const std::string& output() const { return output_; }

  pid_t pid() const { return pid_; }

 private:
  bool readMore();

  int pipe_ = -1;
  pid_t pid_ = -1;
  bool ended_ = false;
  int result_ = 0;
  std::string output_;
};

/// How a program ended that ran to its end.
struct Outcome {
  int exitCode = 0;
  std::string output;

  bool operator==(const Outcome&) const = default;
};

std::ostream& operator<<(std::ostream& os, const Outcome& outcome);

Outcome run(const std::vector<std::string>& arguments, const Surroundings& surroundings = {});

/// What the function returns when it runs in a child process as that user, with these groups;
/// "(failed)" if the child did not end well. REQUIRES: the process may change users.
std::string asUser(uid_t uid, gid_t gid, const std::vector<gid_t>& groups,
                   const std::function<std::string()>& function);

}  // namespace safety
