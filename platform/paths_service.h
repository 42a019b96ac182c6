// The agent's paths service.
#pragma once

#include <string>

/// The variable-data directory of the system, ending in "/": callers append a file name directly.
/// Defined by the agent. Thread-safe.
std::string systemVarDir();
