// Everything that the settings are, as one document.
#include <algorithm>
#include <iostream>

#include "client/failure.h"
#include "client/user_file.h"
#include "client/values.h"
#include "client/verbs/verb.h"
#include "client/verbs/verbs.h"
#include "documents/document.h"
#include "documents/settings_writer.h"
#include "lparams/params/param.h"
#include "text/escape.h"

namespace client {
namespace {

using bridge::NamedValue;
using Values = std::vector<NamedValue>;

constexpr const char* BACKUP_NOTES =
    R"~(Prints the running settings, all of them: users, what is in the file only, and secrets. They are
as a save would write them now, in the settings file's own format. "restore" takes them back.

A FILE can be read by its owner only, is never half written, and replaces no file that is
there unless --force is given. With --json the document is JSON, which cannot hold texts that
are not UTF-8, nor two users of one name.

Who may not write settings gets no secrets, and so no backup.

Examples:
  lparamsctl backup gateway.ini
  lparamsctl backup --json | jq .IKE)~";

struct BackupGiven {
  std::string path;
  bool force = false;
  bool json = false;
};

/// Fails with the names of the values that are so, if there are any.
template <typename IsBad>
void refuse(const Values& values, programs::ExitStatus status, const char* why, IsBad isBad) {
  std::string message;
  for (const NamedValue& value : values) {
    if (isBad(value)) message += text::escaped(value.name) + ": " + why + "\n";
  }
  if (!message.empty()) throw Failure(status, message + "there is no backup");
}

/// A save gives an enumeration's number that has no name its default.
void nameEnumerations(Values& values, const CatalogueView& catalogue) {
  for (NamedValue& value : values) {
    const auto* const param = catalogue.find(value.name);
    if (param == nullptr || param->at("type") != LPARAMS::Server::TYPE_INT) continue;
    const auto& names = param->at("values");
    const auto isValue = [&](const auto& each) { return each.at("name") == *value.running; };
    if (std::ranges::none_of(names, isValue)) value.running = value.byDefault;
  }
}

std::string settingsTextOf(Values values, const CatalogueView& catalogue) {
  refuse(values, programs::EXIT_ILLEGAL, "holds a line end, which the settings file cannot hold",
         [](const NamedValue& value) {
           return value.running->find_first_of(std::string_view("\n\0", 2)) != std::string::npos;
         });
  nameEnumerations(values, catalogue);
  return documents::settingsText(values);
}

std::string jsonOf(const Values& values, const CatalogueView& catalogue) {
  refuse(values, programs::EXIT_ILLEGAL, "is not UTF-8, which JSON cannot hold; leave out --json",
         [](const NamedValue& value) {
           return !text::isUtf8(*value.running) || !text::isUtf8(value.name);
         });
  refuse(values, programs::EXIT_ILLEGAL,
         "the user's name is another one's too, which JSON cannot tell apart; leave out --json",
         [](const NamedValue& value) {
           const NamePieces pieces = takeApart(value.name);
           return pieces.group == documents::USERS && pieces.member == "NAME" &&
                  pieces.user != *value.running;
         });
  return printedJson(documentOf({{}, values}, catalogue));
}

void backup(Context& context, const BackupGiven& given) {
  Store& store = context.store();
  const CatalogueView catalogue(store.schema());
  Values values = store.get({}).values;
  refuse(values, programs::EXIT_NOT_AUTHORISED, "a secret, which only who may write can read",
         [](const NamedValue& value) { return value.secret && !value.byDefault; });
  std::erase_if(values, [](const NamedValue& value) { return !value.running; });
  const std::string text =
      given.json ? jsonOf(values, catalogue) : settingsTextOf(std::move(values), catalogue);
  if (given.path.empty() || given.path == "-") {
    std::cout << text;
    return;
  }
  writePrivateFile(given.path, text, given.force ? Existing::Replaced : Existing::Refused);
}

}  // namespace

void addBackup(CLI::App& app, Context& context) {
  const auto [command, given] =
      addVerb(app, context, "backup", "Print all settings, secrets too", BACKUP_NOTES, backup);
  command.add_option("FILE", given->path, "Where to write; the standard output if it is left out");
  command.add_flag("--force", given->force, "Replace a file that is there");
  addJson(command, given->json);
}

}  // namespace client
