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

/// What the agent would refuse of the steps, a line for each mistake.
std::string refusalOf(AgentStore& agent, const std::vector<Change>& steps) {
  try {
    (void)agent.tryOut({{}, steps});
  } catch (const Failure& failure) {
    if (failure.status == programs::EXIT_ILLEGAL) return failure.what();
  }
  return {};
}

std::vector<Change> stepsOf(Wanted wanted, const NamedValues& now, const ApplyOptions& options) {
  wanted.absent = options.absentUsers;
  wanted.onlyUsers = options.onlyUsers;
  wanted.exclusive = options.exclusive;
  wanted.exactOrder = options.exactOrder;
  return stepsTo(wanted, now);
}

void refuseContradictions(const Wanted& wanted, const ApplyOptions& options) {
  for (const std::string& user : options.absentUsers) {
    if (std::ranges::find(wanted.users, user) == wanted.users.end()) continue;
    throw Failure(programs::EXIT_ILLEGAL,
                  editing::shownName("USERS[" + user + "]") + ": named, and to be removed as well");
  }
}

/// Looks at each document by itself, so that every mistake is told with its own place, also that of
/// a value which a later document replaces. What the agent finds in a single one need not be asked
/// for beforehand.
void refuseMistakes(AgentStore& agent, const WantedDocuments& documents, const NamedValues& now,
                    const ApplyOptions& options) {
  std::string mistakes;
  for (const WantedDocument& document : documents.each()) {
    const std::vector<Change> steps = stepsOf(document.wanted(now), now, options);
    std::string refusal = options.bytes ? "" : oddTexts(steps, now);
    const bool isWrong = document.hasMistakes() || !refusal.empty();
    if (isWrong || documents.each().size() > 1) refusal += refusalOf(agent, steps);
    if (isWrong || !refusal.empty()) mistakes += document.told(refusal);
  }
  if (!mistakes.empty()) throw Refused(nothingWritten(mistakes));
}

/// As if what was saved last were running.
NamedValues asSaved(NamedValues values) {
  for (bridge::NamedValue& value : values.values) value.running = value.saved;
  return values;
}

}  // namespace

Done apply(AgentStore& agent, const WantedDocuments& documents, const ApplyOptions& options) {
  const auto stepsFrom = [&](const NamedValues& now) {
    const Wanted wanted = documents.wanted(now);
    refuseContradictions(wanted, options);
    refuseMistakes(agent, documents, now, options);
    return stepsOf(wanted, now, options);
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
    throw documents.failure(failure.what());
  }
}

bool isSaved(AgentStore& agent, const WantedDocuments& documents, const ApplyOptions& options) {
  const NamedValues saved = asSaved(agent.get({}));
  return stepsOf(documents.wanted(saved), saved, options).empty();
}

}  // namespace client
