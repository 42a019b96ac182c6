#include "client/apply.h"

#include <utility>

#include "bridge/bytes.h"
#include "bridge/named_values.h"

namespace client {
namespace {

using bridge::NamedChanges;
using bridge::NamedValues;

/// Has the agent take the changes back unless they are confirmed in time.
NamedValues writeUntilConfirmed(AgentStore& agent, const ApplyOptions& options,
                                const NamedChanges& changes) {
  std::string input;
  bridge::put(input, static_cast<uint32_t>(options.confirm));
  bridge::put(input, static_cast<uint8_t>(options.save ? 1 : 0));
  bridge::put(input, options.message);
  input += bridge::encode(changes);
  return valuesIn(agent.call(bridge::AgentCommand{"apply", input}, "writing"));
}

/// The document's own mistakes, and those that the agent finds in what could be read of it.
[[noreturn]] void refuse(AgentStore& agent, const WantedDocument& document) {
  std::string refusal;
  try {
    const NamedValues now = agent.get({});
    (void)tryOut(agent, {{}, stepsTo(document.wanted(now), now)});
  } catch (const Failure& failure) {
    if (failure.status == programs::EXIT_ILLEGAL) refusal = failure.what();
  }
  throw document.failure(refusal);
}

}  // namespace

NamedValues tryOut(AgentStore& agent, const NamedChanges& changes) {
  return valuesIn(agent.call(bridge::AgentCommand{"try", bridge::encode(changes)}, "checking"));
}

Done apply(AgentStore& agent, const WantedDocument& document, const ApplyOptions& options) {
  if (document.hasMistakes()) refuse(agent, document);
  const auto stepsFrom = [&](const NamedValues& now) {
    Wanted wanted = document.wanted(now);
    wanted.exclusive = options.exclusive;
    wanted.exactOrder = options.exactOrder;
    return stepsTo(wanted, now);
  };
  const auto write = [&](const NamedChanges& changes) {
    if (options.check) return tryOut(agent, changes);
    return options.confirm > 0 ? writeUntilConfirmed(agent, options, changes) : agent.set(changes);
  };
  try {
    return change(agent, stepsFrom, write);
  } catch (const Failure& failure) {
    if (failure.status != programs::EXIT_ILLEGAL) throw;
    throw document.failure(failure.what());
  }
}

void save(AgentStore& agent, const std::string& message) {
  std::string input;
  bridge::put(input, static_cast<uint8_t>(0));
  bridge::put(input, message);
  (void)agent.call(bridge::AgentCommand{"save", input}, "saving");
}

}  // namespace client
