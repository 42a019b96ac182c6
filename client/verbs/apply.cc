// Documents that say what shall be.
#include <algorithm>
#include <iostream>

#include "client/apply.h"
#include "client/change_report.h"
#include "client/failure.h"
#include "client/user_file.h"
#include "client/values.h"
#include "client/verbs/verb.h"
#include "client/verbs/verbs.h"
#include "text/escape.h"

namespace client {
namespace {

constexpr const char* APPLY_NOTES =
    R"~(A document names what shall be; what is so already is not written, and so nothing is the second
time. Everything is checked before anything is written; then all is written, over all groups,
or nothing. A user who is named and not there is added. "-" stands for the standard input, a
directory for its files *.conf in the order of their names. Several documents are one change: of the
values that they give to a parameter the last one holds. A document is in one of three forms, told
by its first character:

  JSON           {"IKE": {"IKE_PORT": 500}, "USERS": {"bob": {"PMP_TIMEOUT": 20}}}, with null
                 for what stays as it is
  lines          IKE.IKE_PORT=500 and USERS[bob].PMP_TIMEOUT=20; "#" begins a comment
  settings file  as "backup" and the agent write it, whole or with less in it

A secret that is "(hidden)" stays as it is. With --exclusive, what the document does not name
goes to its default, secrets too, and users whom it does not name are removed. With
--only-users only these are removed, and with --remove-user one whom it does not name.

With --ensure-saved nothing is saved if the saved settings are what the documents say already;
--save saves all the same, and with it what else is not saved.

With --check nothing is changed, and the exit status tells whether all is legal; with
--detailed-exitcode it is 2 if something would be changed, or has been.

Examples:
  lparamsctl apply --check --diff gateway.json
  lparamsctl apply --save --message 'new port' gateway.json
  lparamsctl apply --confirm 60 gateway.json && lparamsctl confirm
  lparamsctl apply --ensure-saved all-gateways.conf this-one.conf
  echo IKE.IKE_PORT=501 | lparamsctl apply --diff -)~";

constexpr const char* RESTORE_NOTES =
    R"~(Takes back what "backup" has printed: everything is as it was then, users in their order too, and
what the document does not name is at its default. What is so already is not written; all is
written or nothing. "-" stands for the standard input.

Examples:
  lparamsctl restore --check --diff gateway.ini
  lparamsctl restore --save --message 'back to Monday' gateway.ini)~";

struct ApplyGiven {
  std::vector<std::string> paths;
  ApplyOptions options;
  bool ensureSaved = false;
  bool diff = false;
  bool detailed = false;
  bool json = false;
};

std::string plural(size_t count) {
  return std::to_string(count) + (count == 1 ? " change" : " changes");
}

std::string summaryOf(const ChangeReport& report, const ApplyOptions& options, bool saved) {
  if (report.empty()) return saved ? "nothing to change; saved" : "nothing to change";
  const size_t count =
      report.values.size() + report.added.size() + report.removed.size() + report.moved.size();
  if (options.check) return plural(count) + " to make";
  std::string summary = plural(count) + " made";
  summary += saved ? " and saved" : ", not saved";
  if (options.confirm > 0) {
    summary += "; \"lparamsctl confirm\" keeps them, or they go back in " +
               std::to_string(options.confirm) + " s";
  }
  return summary;
}

/// `unsaved`: changes of somebody else were not saved before.
void print(const ChangeReport& report, const ApplyGiven& given, bool unsaved, bool saved,
           const CatalogueView& catalogue) {
  const std::string summary = summaryOf(report, given.options, saved);
  if (given.json) {
    CatalogueView::Json json = documentOf(report, catalogue);
    json["check"] = given.options.check;
    json["unsaved"] = unsaved;
    json["saved"] = saved;
    json["message"] = summary;
    std::cout << printedJson(json);
    return;
  }
  // What is not saved is said once, below.
  if (given.diff) std::cout << linesOf(report, Kept::Saved);
  std::cout << summary << '\n';
}

bool hasUnsavedChanges(AgentStore& agent) {
  const auto state = CatalogueView::Json::parse(agent.status(), nullptr, false);
  return state.is_object() && state.value("changed", false);
}

struct Input {
  std::string name;  ///< what messages call it
  std::string text;
};

std::vector<Input> read(const ApplyGiven& given) {
  std::vector<Input> inputs;
  for (const std::string& path : given.paths) {
    for (const std::string& file : configurationFiles(path)) {
      inputs.push_back({inputName(file), readUserInput(file, documents::MAX_SIZE)});
    }
  }
  if (inputs.empty() && (given.options.exclusive || given.options.onlyUsers)) {
    throw Failure(programs::EXIT_ILLEGAL, text::escaped(given.paths.front()) +
                                              ": no file *.conf, and so nothing that would stay");
  }
  return inputs;
}

void apply(Context& context, const ApplyGiven& given) {
  ApplyOptions options = given.options;
  options.save = options.save || given.ensureSaved;
  if (!options.message.empty() && !options.save) {
    throw Failure(programs::EXIT_USAGE, "a message is for what is saved: add --save");
  }
  AgentStore& agent = context.agent();
  const std::vector<Input> inputs = read(given);
  const CatalogueView catalogue(agent.schema());
  std::vector<WantedDocument> each;
  each.reserve(inputs.size());
  for (const auto& [name, text] : inputs) each.emplace_back(name, documents::read(text), catalogue);
  const WantedDocuments documents(std::move(each));
  const bool unsaved = given.json && hasUnsavedChanges(agent);
  const Done done = client::apply(agent, documents, options);
  const ChangeReport report(done);
  const bool saved = options.save && !options.check;
  // What has to be confirmed is saved already.
  const bool inAnyCase = given.options.save || !done.steps.empty();
  const bool toSave = saved && (options.confirm == 0 || done.steps.empty());
  if (toSave && (inAnyCase || !isSaved(agent, documents, options))) {
    try {
      agent.save({.message = options.message});
    } catch (const Failure&) {
      print(report, given, unsaved, false, catalogue);
      throw;
    }
  }
  print(report, given, unsaved, saved, catalogue);
  if (given.detailed && !report.empty()) context.status = programs::EXIT_CHANGED;
}

void addOptions(CLI::App& command, ApplyGiven& given) {
  command.add_flag("--check", given.options.check, "Change nothing, only tell");
  command.add_flag("--diff", given.diff, "Print each change");
  command.add_flag("--save", given.options.save, "Save the settings then");
  command.add_option("--message", given.options.message, "Why, for the history of what was saved")
      ->type_name("TEXT");
  command.add_flag("--detailed-exitcode", given.detailed,
                   "Exit with 2 if something would be changed, or has been");
  addJson(command, given.json);
}

}  // namespace

void addApply(CLI::App& app, Context& context) {
  const auto [command, given] =
      addVerb(app, context, "apply", "Make the settings what documents say", APPLY_NOTES, apply);
  command.add_option("FILE", given->paths, "Documents or directories; - for the standard input")
      ->required();
  addOptions(command, *given);
  command.add_flag("--ensure-saved", given->ensureSaved, "Save the settings then, unless they are");
  addBytes(command, given->options.bytes);
  command.add_flag("--exclusive", given->options.exclusive,
                   "What the document does not name goes to its default");
  command.add_flag("--only-users", given->options.onlyUsers,
                   "Remove the users whom the document does not name");
  command
      .add_option("--remove-user", given->options.absentUsers,
                  "Remove this user, too; may be repeated")
      ->type_name("USER")
      ->allow_extra_args(false);
  command
      .add_option("--confirm", given->options.confirm,
                  "Take the changes back unless they are confirmed in time")
      ->type_name("SECONDS")
      ->check(CLI::Range(1, 86400));
}

void addRestore(CLI::App& app, Context& context) {
  const auto [command, given] =
      addVerb(app, context, "restore", "Take a backup back", RESTORE_NOTES, apply);
  given->options.exclusive = true;
  given->options.exactOrder = true;
  given->options.bytes = true;
  command.add_option("FILE", given->paths, "The document; - for the standard input")
      ->required()
      ->expected(1);
  addOptions(command, *given);
}

}  // namespace client
