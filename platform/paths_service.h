// The agent's paths service.
#pragma once

#include <string>

// The agent exports what is declared here to the modules that it loads.
#pragma GCC visibility push(default)

/// The variable-data directory of the system, ending in "/": callers append a file name directly.
/// Defined by the agent. Thread-safe.
std::string systemVarDir();

#pragma GCC visibility pop
