// Back to what was saved once.
#include "client/revision.h"
#include "client/verbs/verb.h"
#include "client/verbs/verbs.h"

namespace client {
namespace {

constexpr const char* ROLLBACK_NOTES =
    R"~(Makes everything what it was in a revision of the history, users in their order, file-only
parameters and secrets too. What is so already is not written; all is written or nothing. It is
a change like every other: with --save it is a new revision itself, and the revisions behind
the one that it goes back to stay.

Examples:
  lparamsctl rollback 12
  lparamsctl rollback 12 --save --message 'the new ports did not work')~";

struct RollbackGiven {
  uint64_t number = 0;
  SaveOption save;
  bool json = false;
};

void rollback(Context& context, const RollbackGiven& given) {
  AgentStore& agent = context.agent();
  const bridge::NamedValues revision = revisionOf(agent, given.number);
  const Done done = change(
      agent, [&](const bridge::NamedValues& now) { return stepsTo(wantedOf(revision, now), now); });
  SaveOption save = given.save;
  if (save.how.message.empty()) {
    save.how.message = "rollback to revision " + std::to_string(given.number);
  }
  finish(ChangeReport(done), save, given.json, agent);
}

}  // namespace

void addRollback(CLI::App& app, Context& context) {
  const auto [command, given] = addVerb(
      app, context, "rollback", "Take settings back to a revision", ROLLBACK_NOTES, rollback);
  command.add_option("REVISION", given->number, "Its number in the history")
      ->required()
      ->check(revisionNumbers());
  addSave(command, given->save);
  addJson(command, given->json);
}

}  // namespace client
