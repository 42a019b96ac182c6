// The three streams that a process is started with.
#pragma once

#include <string>

namespace agent {

/// Puts /dev/null in the place of the standard streams that are closed: else files that the agent
/// opens would have their numbers, and the log would be written into one. Returns their names, in
/// words; empty if none was closed. Call before anything is opened. Throws StartFailure if
/// /dev/null cannot be opened.
std::string openClosedStreams();

/// Whether the standard error stream was one of them: nobody can read the log then.
bool logIsClosed();

}  // namespace agent
