#include "client/context.h"

#include <chrono>

#include "client/failure.h"

namespace client {

Store& Context::store() { return agent(); }

AgentStore& Context::agent() {
  if (!file.empty()) {
    throw Failure(programs::EXIT_USAGE, "this command is for an agent, not for a file");
  }
  if (!agent_) agent_ = std::make_unique<AgentStore>(socketPath, std::chrono::seconds(timeout));
  return *agent_;
}

}  // namespace client
