// Back to the defaults.
#include "client/verbs/verb.h"
#include "client/verbs/verbs.h"

namespace client {
namespace {

using bridge::Change;

constexpr const char* RESET_NOTES =
    R"~(Takes parameters, whole groups or users, or everything to the defaults. The default of the user
list is an empty one: "USERS" and --all remove all users; a user by name stays, with the
fields at their defaults.

Examples:
  lparamsctl reset IKE.EXCHANGE_TIMEOUT
  lparamsctl reset LOG 'USERS[anna]'
  lparamsctl reset --all --save)~";

struct ResetGiven {
  Selection what;
  SaveOption save;
  bool json = false;
};

std::vector<Change> stepsToDefaults(const std::vector<bridge::NamedValue>& values,
                                    const Selection& what) {
  std::vector<Change> steps;
  for (const bridge::NamedValue& value : values) {
    if (!value.running || value.running == value.byDefault) continue;
    const NamePieces pieces = takeApart(value.name);
    const bool ofUser = value.name.starts_with("USERS[");
    const bool isName = ofUser && pieces.member == "NAME";
    if (isName && what.hasAllUsers()) steps.push_back({Change::RemoveUser, pieces.user});
    if (isName || (ofUser && what.hasAllUsers())) continue;
    steps.push_back({Change::Set, value.name, value.byDefault.value_or("")});
  }
  return steps;
}

void reset(Context& context, const ResetGiven& given) {
  given.what.require();
  Store& store = context.store();
  const Done done = change(store, [&](const bridge::NamedValues& now) {
    return stepsToDefaults(given.what.of(now, store), given.what);
  });
  finish(ChangeReport(done), given.save, given.json, store);
}

}  // namespace

void addReset(CLI::App& app, Context& context) {
  const auto [command, given] =
      addVerb(app, context, "reset", "Take settings to their defaults", RESET_NOTES, reset);
  addSelection(command, given->what);
  addSave(command, given->save);
  addJson(command, given->json);
}

}  // namespace client
