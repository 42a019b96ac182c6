// What was saved, by whom, when and why.
#include <iostream>

#include "client/change_report.h"
#include "client/revision.h"
#include "client/values.h"
#include "client/verbs/verb.h"
#include "client/verbs/verbs.h"
#include "text/escape.h"
#include "text/utc.h"

namespace client {
namespace {

using bridge::NamedValue;
using bridge::Revision;
using Json = CatalogueView::Json;

constexpr const char* HISTORY_NOTES =
    R"~(Prints what was saved, newest first: the number, the time (UTC), the user and the program, the
message, and what was changed since the revision before. The agent keeps the newest 50, unless
it is told another number. "rollback" takes settings back to one of them, "diff --revision"
compares them with it. Secrets are "(hidden)".

Examples:
  lparamsctl history
  lparamsctl history --json)~";

struct HistoryGiven {
  bool json = false;
};

std::string utc(int64_t milliseconds) {
  return text::utc(static_cast<std::time_t>(milliseconds / 1000));
}

struct Changes {
  ChangeReport report = {};
  bool order = false;  ///< of the users is another one
};

Changes changesOf(const Revision& revision) {
  Changes changes;
  for (NamedValue value : revision.changes) {
    const NamePieces pieces = takeApart(value.name);
    const bool ofUser = value.name.starts_with("USERS[");
    if (value.name == "USERS") {
      changes.order = true;
    } else if (ofUser && pieces.member.empty()) {
      (value.running ? changes.report.added : changes.report.removed).push_back(pieces.user);
    } else if (value.secret) {
      value.before = "former";  // neither is shown
      value.running = "later";
      changes.report.values.push_back(std::move(value));
    } else if (!ofUser || (value.before && value.running)) {  // else the user is told
      changes.report.values.push_back(std::move(value));
    }
  }
  return changes;
}

std::string historyLines(const Revision& revision) {
  std::string lines = std::to_string(revision.number) + "  " + utc(revision.time) + "  uid " +
                      std::to_string(revision.uid) + ", " + text::escaped(revision.program) + "[" +
                      std::to_string(revision.pid) + "]";
  if (!revision.message.empty()) lines += "  " + text::escaped(revision.message);
  lines += "\n";
  const Changes changes = changesOf(revision);
  std::string told = linesOf(changes.report, Kept::Saved);
  if (changes.order) told += "USERS: another order\n";
  if (revision.changesLeftOut > 0) {
    told += "and " + std::to_string(revision.changesLeftOut) + " more changes\n";
  }
  for (size_t at = 0; at < told.size();) {
    const size_t end = told.find('\n', at) + 1;
    lines += "    " + told.substr(at, end - at);
    at = end;
  }
  return lines;
}

Json documentOf(const Revision& revision, const CatalogueView& catalogue) {
  const Changes changes = changesOf(revision);
  const Json report = documentOf(changes.report, catalogue);
  return {{"revision", revision.number},
          {"time", utc(revision.time)},
          {"uid", revision.uid},
          {"pid", revision.pid},
          {"program", revision.program},
          {"message", revision.message},
          {"changes", report["changes"]},
          {"added", report["added"]},
          {"removed", report["removed"]},
          {"reordered", changes.order},
          {"changesLeftOut", revision.changesLeftOut}};
}

void history(Context& context, const HistoryGiven& given) {
  AgentStore& agent = context.agent();
  std::string leftOut;
  const auto revisions = historyOf(agent, leftOut);
  if (given.json) {
    const CatalogueView catalogue(agent.schema());
    Json all = Json::array();
    for (const Revision& revision : revisions) all.push_back(documentOf(revision, catalogue));
    std::cout << printedJson(all);
  } else {
    for (const Revision& revision : revisions) std::cout << historyLines(revision);
  }
  if (!leftOut.empty()) {
    std::cerr << "lparamsctl: warning: " << text::escaped(leftOut) << '\n';
  }
}

}  // namespace

void addHistory(CLI::App& app, Context& context) {
  const auto [command, given] = addVerb(
      app, context, "history", "Print what was saved, by whom and why", HISTORY_NOTES, history);
  addJson(command, given->json);
}

}  // namespace client
