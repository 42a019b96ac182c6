// Runs the client on a terminal, as somebody who sits in front of it does.
#pragma once

#include <sys/types.h>

#include <map>
#include <string>
#include <vector>

namespace client_testing {

/// lparamsctl on a pseudo-terminal.
class ClientOnTerminal {
 public:
  enum Echo { Silent, Echoing };

  /// Starts it with these variables in its environment besides those of the test.
  ClientOnTerminal(std::vector<std::string> arguments,
                   const std::map<std::string, std::string>& variables, Echo echo = Silent);

  /// Kills the client if it still runs.
  ~ClientOnTerminal();

  ClientOnTerminal(const ClientOnTerminal&) = delete;
  ClientOnTerminal& operator=(const ClientOnTerminal&) = delete;

  /// Waits until the output since the last call ends with the text, and returns that output; all of
  /// it if the client ends without.
  std::string outputUntil(const std::string& text);

  void type(const std::string& line) const;

  /// Types what interrupts.
  void interrupt() const { type("\x03"); }

  /// Closes the terminal's input: whoever reads it reads its end.
  void typeEnd() const { type("\x04"); }

  /// What is left of the output, when the client has ended.
  std::string rest() { return outputUntil({}); }

  /// Waits for the end. -1 if a signal ended it.
  int exitCode();

 private:
  int terminal_ = -1;
  pid_t id_ = -1;
};

}  // namespace client_testing
