// Revisions of an agent's history.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "bridge/history.h"
#include "client/agent_store.h"
#include "client/steps.h"

namespace client {

/// The history, newest first. `leftOut` gets what the agent says it lacks; empty if nothing.
std::vector<bridge::Revision> historyOf(AgentStore& agent, std::string& leftOut);

/// The values that a revision has, as the running ones. Throws Failure if there is no such one.
bridge::NamedValues revisionOf(AgentStore& agent, uint64_t number);

/// Settings as they were in the revision, users in their order too. Throws Failure where users
/// could not be made again, because several have one name.
Wanted wantedOf(const bridge::NamedValues& revision, const bridge::NamedValues& now);

}  // namespace client
