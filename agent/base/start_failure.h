// How a start of the agent fails.
#pragma once

#include <exception>
#include <stdexcept>
#include <string>

#include "agent/base/exit_status.h"

namespace agent {

/// Ends the start. The message is for the log, in words.
class StartFailure : public std::runtime_error {
 public:
  StartFailure(int exitStatus, const std::string& message)
      : std::runtime_error(message), exitStatus(exitStatus) {}

  const int exitStatus;  ///< of the process
};

/// Carries out a step of the start and returns what it returns. Any other exception that it throws
/// becomes a StartFailure with this exit status and the same message.
template <typename Step>
auto startStep(int exitStatus, Step step) {
  try {
    return step();
  } catch (const StartFailure&) {
    throw;
  } catch (const std::exception& error) {
    throw StartFailure(exitStatus, error.what());
  }
}

}  // namespace agent
