// How a command of the client fails.
#pragma once

#include <stdexcept>
#include <string>

#include "programs/exit_status.h"

namespace client {

/// Ends the command. The message is one line for each thing that is wrong, and holds no secret.
class Failure : public std::runtime_error {
 public:
  Failure(programs::ExitStatus status, const std::string& message)
      : std::runtime_error(message), status(status) {}

  const programs::ExitStatus status;
};

/// What is wrong with values; `mistakes` has a line for each.
inline Failure nothingWritten(const std::string& mistakes) {
  return {programs::EXIT_ILLEGAL, mistakes + "nothing was written"};
}

/// The settings have changed meanwhile, or the agent is busy: the same may work when it is tried
/// again with what is there then.
class Conflict : public Failure {
 public:
  explicit Conflict(const std::string& message) : Failure(programs::EXIT_TRY_AGAIN, message) {}
};

}  // namespace client
