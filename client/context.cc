#include "client/context.h"

#include <chrono>

#include "client/failure.h"
#include "client/file_store.h"

namespace client {

Store& Context::store() {
  if (file.empty()) return agent();
  if (!inFile_) inFile_ = std::make_unique<FileStore>(file);
  return *inFile_;
}

AgentStore& Context::agent() {
  if (!file.empty()) {
    throw Failure(programs::EXIT_USAGE,
                  "this command is for an agent; with --file there are get, list, show, describe, "
                  "diff, set, revert, reset, user and backup");
  }
  if (!agent_) agent_ = std::make_unique<AgentStore>(socketPath, std::chrono::seconds(timeout));
  return *agent_;
}

}  // namespace client
