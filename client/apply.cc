#include "client/apply.h"

#include <map>
#include <string_view>
#include <utility>

#include "bridge/apply.h"
#include "bridge/named_values.h"
#include "client/assignment.h"
#include "text/escape.h"

namespace client {
namespace {

using bridge::Change;
using bridge::NamedChanges;
using bridge::NamedValues;

/// Has the agent take the changes back unless they are confirmed in time.
NamedValues writeUntilConfirmed(AgentStore& agent, const ApplyOptions& options,
                                const NamedChanges& changes) {
  const bridge::ApplyRequest request{options.confirm, options.save, options.message, changes};
  return valuesIn(agent.call(bridge::AgentCommand{"apply", bridge::encode(request)}, "writing"));
}

/// A failure that says all already.
class Refused : public Failure {
 public:
  explicit Refused(const Failure& failure) : Failure(failure) {}
};

/// The mistakes of the document, and those that the agent finds in the steps.
[[noreturn]] void refuse(AgentStore& agent, const WantedDocument& document, std::string mistakes,
                         const std::vector<Change>& steps) {
  try {
    (void)agent.tryOut({{}, steps});
  } catch (const Failure& failure) {
    if (failure.status == programs::EXIT_ILLEGAL) mistakes += failure.what();
  }
  throw Refused(document.failure(mistakes));
}

}  // namespace

std::string oddTexts(const std::vector<Change>& steps, const NamedValues& now) {
  std::map<std::string_view, const bridge::NamedValue*> present;
  for (const bridge::NamedValue& value : now.values) present.emplace(value.name, &value);
  constexpr const char* ODD = " does not show what it is; --bytes takes it all the same\n";
  std::string odd;
  for (const Change& step : steps) {
    if (step.kind == Change::AddUser && !showsAsItIs(step.name)) {
      const std::string user = "USERS[" + step.name + "]";
      if (present.contains(user + ".NAME")) continue;  // moves to another place
      odd += documents::shownName(user) + ": the name" + ODD;
    }
    if (step.kind != Change::Set || showsAsItIs(step.value)) continue;
    const auto found = present.find(step.name);
    const bool isThere = found != present.end();
    if (isThere && found->second->running == step.value) continue;
    const bool secret = isThere && found->second->secret;
    odd += documents::shownName(step.name) + ": " +
           (secret ? "the value" : text::inQuotes(step.value)) + ODD;
  }
  return odd;
}

Done apply(AgentStore& agent, const WantedDocument& document, const ApplyOptions& options) {
  const auto stepsFrom = [&](const NamedValues& now) {
    Wanted wanted = document.wanted(now);
    wanted.exclusive = options.exclusive;
    wanted.exactOrder = options.exactOrder;
    std::vector<Change> steps = stepsTo(wanted, now);
    const std::string odd = options.bytes ? "" : oddTexts(steps, now);
    if (document.hasMistakes() || !odd.empty()) refuse(agent, document, odd, steps);
    return steps;
  };
  const auto write = [&](const NamedChanges& changes) {
    if (options.check) return agent.tryOut(changes);
    return options.confirm > 0 ? writeUntilConfirmed(agent, options, changes) : agent.set(changes);
  };
  try {
    return change(agent, stepsFrom, write);
  } catch (const Refused&) {
    throw;
  } catch (const Failure& failure) {
    if (failure.status != programs::EXIT_ILLEGAL) throw;
    throw document.failure(failure.what());
  }
}

void save(AgentStore& agent, const std::string& message) { agent.save({.message = message}); }

}  // namespace client
