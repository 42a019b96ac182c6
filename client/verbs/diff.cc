// What the settings have otherwise than others.
#include <iostream>
#include <map>

#include "client/failure.h"
#include "client/file_store.h"
#include "client/revision.h"
#include "client/values.h"
#include "client/verbs/verb.h"
#include "client/verbs/verbs.h"
#include "text/escape.h"

namespace client {
namespace {

using bridge::NamedValue;
using bridge::NamedValues;

constexpr const char* DIFF_NOTES =
    R"~(Compares the settings with the saved ones, and prints what differs: the other value, then the
one that holds. Instead of the saved ones it takes the defaults, a settings file, or a revision of
the agent's history. Exits with 0 if nothing differs, and with 1 if something does. Secrets are
compared, but not shown.

Examples:
  lparamsctl diff
  lparamsctl diff --default
  lparamsctl diff --revision 12
  lparamsctl diff --file /var/backups/localsettings.ini)~";

struct DiffGiven {
  bool byDefault = false;
  std::string file;
  uint64_t revision = 0;  ///< 0: none
  bool json = false;
};

/// Settings by their names, one value each.
class Column {
 public:
  Column(const NamedValues& values, std::optional<std::string> NamedValue::*column) {
    for (const NamedValue& value : values.values) {
      if (value.*column) values_.emplace(value.name, *(value.*column));
    }
  }

  std::optional<std::string> find(const std::string& name) const {
    const auto found = values_.find(name);
    return found == values_.end() ? std::nullopt : std::optional(found->second);
  }

 private:
  std::map<std::string, std::string> values_;
};

/// What is different in `now`, whose values get the others as those before.
ChangeReport differences(const NamedValues& now, const Column& others, const NamedValues& ofOthers,
                         bool usersByDefault) {
  ChangeReport report;
  const auto isName = [](const std::string& name) {
    return name.starts_with("USERS[") && takeApart(name).member == "NAME";
  };
  const Column running(now, &NamedValue::running);
  for (NamedValue value : now.values) {
    if (!value.running) continue;
    value.before = others.find(value.name);
    const bool isNew = isName(value.name) && (usersByDefault || !value.before);
    if (isNew) {
      report.added.push_back(takeApart(value.name).user);
    } else if (value.before != value.running &&
               (value.before || value.running != value.byDefault)) {
      report.values.push_back(value);
    }
  }
  for (const NamedValue& other : ofOthers.values) {
    if (isName(other.name) && others.find(other.name) && !running.find(other.name)) {
      report.removed.push_back(takeApart(other.name).user);
    }
  }
  return report;
}

std::string lineOf(const NamedValue& value) {
  if (value.secret) return text::escaped(value.name) + ": (differs, hidden)\n";
  return changeLine(value, true) + "\n";
}

ChangeReport compare(Context& context, const DiffGiven& given) {
  const NamedValues now = context.store().get({});
  if (given.byDefault) return differences(now, {now, &NamedValue::byDefault}, {}, true);
  if (given.file.empty() && given.revision == 0)
    return differences(now, {now, &NamedValue::saved}, now, false);
  if (given.revision > 0) {
    const NamedValues former = revisionOf(context.agent(), given.revision);
    return differences(now, {former, &NamedValue::running}, former, false);
  }
  const NamedValues inFile = FileStore(given.file, FileStore::ToCompare).get({});
  return differences(now, {inFile, &NamedValue::running}, inFile, false);
}

void diff(Context& context, const DiffGiven& given) {
  const ChangeReport report = compare(context, given);
  if (given.json) {
    print(std::cout, report, Kept::Saved, true, context.store());
  } else {
    ChangeReport users = report;
    users.values.clear();
    std::cout << linesOf(users, Kept::Saved);
    for (const NamedValue& value : report.values) std::cout << lineOf(value);
  }
  if (!report.empty()) context.status = programs::EXIT_DIFFERS;
}

}  // namespace

void addDiff(CLI::App& app, Context& context) {
  const auto [command, given] =
      addVerb(app, context, "diff", "Print what differs from the saved settings", DIFF_NOTES, diff);
  CLI::Option* const byDefault =
      command.add_flag("--default", given->byDefault, "Compare with the defaults");
  command.add_option("--file", given->file, "Compare with a settings file")
      ->type_name("FILE")
      ->excludes(byDefault);
  command.add_option("--revision", given->revision, "Compare with a revision of the history")
      ->type_name("REVISION")
      ->check(revisionNumbers())
      ->excludes(byDefault)
      ->excludes("--file");
  addJson(command, given->json);
}

}  // namespace client
