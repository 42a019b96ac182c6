// Back to what was saved.
#include <algorithm>

#include "client/verbs/verb.h"
#include "client/verbs/verbs.h"

namespace client {
namespace {

using bridge::Change;

constexpr const char* REVERT_NOTES =
    R"~(Takes parameters, whole groups or users, or everything back to the saved values: what the
agent would load at its next start. Users who were added go, and those who were removed come
back, at the end of the list.

Examples:
  lparamsctl revert IKE.EXCHANGE_TIMEOUT
  lparamsctl revert LOG 'USERS[anna]'
  lparamsctl revert --all)~";

struct RevertGiven {
  Selection what;
  bool json = false;
};

std::vector<Change> stepsBack(const std::vector<bridge::NamedValue>& values,
                              const Selection& what) {
  std::vector<Change> steps;
  std::vector<Change> settings;  // they follow, as they may be of users who come back
  for (const bridge::NamedValue& value : values) {
    if (value.running == value.saved) continue;
    const NamePieces pieces = takeApart(value.name);
    const bool isName = value.name.starts_with("USERS[") && pieces.member == "NAME";
    if (value.saved && (value.running || !isName)) {
      settings.push_back({Change::Set, value.name, *value.saved});
    } else if (value.saved) {
      steps.push_back({Change::AddUser, *value.saved});
    } else if (isName && what.hasUser(pieces.user)) {
      steps.push_back({Change::RemoveUser, pieces.user});
    }
  }
  std::ranges::move(settings, std::back_inserter(steps));
  return steps;
}

void revert(Context& context, const RevertGiven& given) {
  given.what.require();
  Store& store = context.store();
  const Done done = change(store, [&](const bridge::NamedValues& now) {
    return stepsBack(given.what.of(now, store), given.what);
  });
  finish(ChangeReport(done), {}, given.json, store);
}

}  // namespace

void addRevert(CLI::App& app, Context& context) {
  const auto [command, given] =
      addVerb(app, context, "revert", "Take settings back to what was saved", REVERT_NOTES, revert);
  addSelection(command, given->what);
  addJson(command, given->json);
}

}  // namespace client
