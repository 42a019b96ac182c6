// How a command of the client fails.
#pragma once

#include <stdexcept>
#include <string>

namespace client {

/// What the process returns. Scripts depend on the numbers: do not change one.
enum class ExitCode {
  Done = 0,
  Refused = 1,  ///< by the agent or the module
  Usage = 2,    ///< a name or value is wrong; nothing was written
  NoAgent = 3,  ///< not reachable, or not understood
};

/// Ends the command. The message is one line and holds no secret.
class Failure : public std::runtime_error {
 public:
  Failure(ExitCode code, const std::string& message) : std::runtime_error(message), code(code) {}

  const ExitCode code;
};

}  // namespace client
