#include "client/apply.h"

#include <algorithm>
#include <utility>

#include "bridge/apply.h"
#include "bridge/named_values.h"
#include "client/odd_texts.h"
#include "editing/shown_name.h"

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

Done apply(AgentStore& agent, const WantedDocument& document, const ApplyOptions& options) {
  const auto stepsFrom = [&](const NamedValues& now) {
    Wanted wanted = document.wanted(now);
    for (const std::string& user : options.absentUsers) {
      if (std::ranges::find(wanted.users, user) == wanted.users.end()) continue;
      throw Failure(programs::EXIT_ILLEGAL, editing::shownName("USERS[" + user + "]") +
                                                ": named, and to be removed as well");
    }
    wanted.absent = options.absentUsers;
    wanted.onlyUsers = options.onlyUsers;
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

}  // namespace client
