// What is done at the same time.
#pragma once

#include <array>

#include "tests/prove/races/agent_at_work.h"

namespace races {

struct Operation {
  const char* name;

  /// Is done on any thread. Throws if it fails, as it may while the agent ends.
  void (*perform)(AgentAtWork& agent);
};

/// The matrix has all pairs of them, also each with itself.
extern const std::array<Operation, 10> OPERATIONS;

/// A planted fault: looks at a value, which `write` changes, without its lock.
extern const Operation PEEK;

/// Adds the observer of the operation `observers`. Call once, before the first start.
void addObserver(LPARAMS::Server::Server_t& server);

}  // namespace races
