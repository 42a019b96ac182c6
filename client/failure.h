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

}  // namespace client
