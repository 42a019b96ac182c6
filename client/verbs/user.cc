// The user list.
#include <iostream>

#include "client/assignment.h"
#include "client/failure.h"
#include "client/setting_lines.h"
#include "client/values.h"
#include "client/verbs/verb.h"
#include "client/verbs/verbs.h"
#include "text/escape.h"

namespace client {
namespace {

using bridge::Change;

constexpr const char* USER_LIST_NOTES = R"~(One name a line, in the order of the list.)~";

constexpr const char* USER_SHOW_NOTES =
    R"~(Examples:
  lparamsctl user show anna)~";

constexpr const char* USER_ADD_NOTES =
    R"~(Fields that are not given have their defaults. The name must not be taken.

Examples:
  lparamsctl user add anna
  lparamsctl user add anna PMP_AUTH=PMPAUTH_PSK PMP_PSK_NAME=office)~";

constexpr const char* USER_SET_NOTES =
    R"~(All of the fields are changed or none.

Examples:
  lparamsctl user set anna PMP_TIMEOUT=20 PMP_AUTH=PMPAUTH_PSK)~";

constexpr const char* USER_RENAME_NOTES =
    R"~(The new name must not be taken.

Examples:
  lparamsctl user rename anna berta)~";

constexpr const char* USER_DEL_NOTES =
    R"~(All of the users are removed or, if one is not there, none. A number is the index of an entry,
counted from 0, unless a user has it as the name.

Examples:
  lparamsctl user del anna
  lparamsctl user del 0)~";

constexpr const char* NAME_FIELD = ".NAME";

struct UserGiven {
  std::string name;
  std::string newName;
  std::vector<std::string> names;
  std::vector<std::string> fields;  // FIELD=VALUE
  bool bytes = false;
  SaveOption save;
  bool json = false;
};

/// What the agent calls a user.
std::string userName(const std::string& name) { return "USERS[" + name + "]"; }

void addFields(Assignments& assignments, const UserGiven& given) {
  for (const std::string& field : given.fields) {
    assignments.add(field, userName(given.name) + ".");
  }
}

void carryOut(Context& context, Assignments& assignments, const UserGiven& given) {
  client::carryOut(context.store(), assignments, given.bytes, given.save, given.json);
}

void listUsers(Context& context, const UserGiven& given) {
  CatalogueView::Json names = CatalogueView::Json::array();
  std::string lines;
  for (const bridge::NamedValue& value : context.store().get({"USERS"}).values) {
    if (!value.running || takeApart(value.name).member != "NAME") continue;
    names.push_back(*value.running);
    lines += text::escaped(*value.running) + "\n";
  }
  std::cout << (given.json ? printedJson(names) : lines);
}

void showUser(Context& context, const UserGiven& given) {
  const auto printed = given.json ? settingDocument : settingLines;
  std::cout << printed(context.store(), userName(given.name), true);
}

void appendUser(Context& context, const UserGiven& given) {
  Assignments assignments;
  assignments.add(Change{Change::AddUser, given.name});
  addFields(assignments, given);
  carryOut(context, assignments, given);
}

void changeUser(Context& context, const UserGiven& given) {
  Assignments assignments;
  addFields(assignments, given);
  carryOut(context, assignments, given);
}

void renameUser(Context& context, const UserGiven& given) {
  Assignments assignments;
  assignments.add(Change{Change::Set, userName(given.name) + NAME_FIELD, given.newName});
  carryOut(context, assignments, given);
}

/// All of the users or, if one is not there, none.
void deleteUsers(Context& context, const UserGiven& given) {
  Assignments assignments;
  for (const std::string& name : given.names) assignments.add(Change{Change::RemoveUser, name});
  carryOut(context, assignments, given);
}

/// Adds a verb for one user.
Verb<UserGiven> addForUser(CLI::App& user, Context& context, const char* name,
                           const char* description, const char* notes,
                           void (*run)(Context& context, const UserGiven& given),
                           const char* argument = "USER") {
  auto verb = addVerb(user, context, name, description, notes, run);
  verb.command.add_option(argument, verb.given->name, "The user's name")->required();
  return verb;
}

}  // namespace

void addUser(CLI::App& app, Context& context) {
  CLI::App& user = *app.add_subcommand("user", "Look at and change the user list");
  user.require_subcommand(1);

  const auto list =
      addVerb(user, context, "list", "Print the users' names", USER_LIST_NOTES, listUsers);
  addJson(list.command, list.given->json);
  const auto show =
      addForUser(user, context, "show", "Print the fields of a user", USER_SHOW_NOTES, showUser);
  addJson(show.command, show.given->json);
  const auto add =
      addForUser(user, context, "add", "Append a user", USER_ADD_NOTES, appendUser, "NEW-NAME");
  add.command.add_option("FIELD=VALUE", add.given->fields, "Fields of the user and their values");
  const auto change =
      addForUser(user, context, "set", "Change fields of a user", USER_SET_NOTES, changeUser);
  change.command.add_option("FIELD=VALUE", change.given->fields, "Fields and their values")
      ->required();
  const auto rename = addForUser(user, context, "rename", "Give a user another name",
                                 USER_RENAME_NOTES, renameUser);
  rename.command.add_option("NEW-NAME", rename.given->newName, "The new name")->required();
  const auto remove = addVerb(user, context, "del", "Remove users", USER_DEL_NOTES, deleteUsers);
  remove.command.add_option("USER", remove.given->names, "The users")->required();
  for (const Verb<UserGiven>& verb : {add, change, rename, remove}) {
    addBytes(verb.command, verb.given->bytes);
    addSave(verb.command, verb.given->save);
    addJson(verb.command, verb.given->json);
  }
}

}  // namespace client
