// Runs the client as a user does.
#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace client_testing {

/// How a run ended.
struct Outcome {
  int exitCode = -1;  ///< or -1 if a signal ended it
  std::string out;    ///< what it wrote to the standard output
  std::string err;    ///< what it wrote to the standard error stream

  bool operator==(const Outcome&) const = default;
};

std::ostream& operator<<(std::ostream& os, const Outcome& outcome);

/// A run that prints this and succeeds.
Outcome printed(std::string out);

/// A run that prints nothing but the lines of its error.
Outcome failed(int exitCode, const std::string& message);

/// Besides the arguments of the command line.
struct Surroundings {
  std::string in = {};               ///< the standard input
  std::string inputPath = {};        ///< what the standard input is instead, if it is not empty
  std::string variable = {};         ///< "NAME=VALUE" to add to the environment
  const char* outputPath = nullptr;  ///< instead of keeping the standard output
};

/// Runs lparamsctl to its end. LPARAMS_SOCKET is not set, unless `surroundings` sets it.
Outcome runClient(std::vector<std::string> arguments, const Surroundings& surroundings = {});

}  // namespace client_testing
