#include "client/command_line.h"

#include <CLI/CLI.hpp>
#include <chrono>
#include <iostream>
#include <string>
#include <vector>

#include "bridge/protocol.h"
#include "client/commands.h"
#include "client/failure.h"
#include "client/help.h"
#include "schema/schema.h"
#include "text/escape.h"
#include "text/similar.h"

namespace client {
namespace {

/// What the command line says. Each sub-command uses its share of it.
struct Arguments {
  std::string socketPath = "/run/lparams/agent.sock";
  unsigned timeout = 30;  // seconds
  bool secrets = false;
  bool force = false;
  bool findings = false;
  bool save = false;
  bool json = false;
  ListFilter filter;
  std::string name;
  std::string newName;
  std::vector<std::string> names;
};

using Action = void (*)(Store& store, const Arguments& given);

/// The action runs when the whole command line has been parsed into the arguments.
CLI::App& addCommand(CLI::App& parent, const char* name, const char* description, const char* notes,
                     const Arguments& arguments, Action action) {
  CLI::App* const command = parent.add_subcommand(name, description);
  command->footer(notes);
  command->callback([&arguments, action] {
    Store store(arguments.socketPath, std::chrono::seconds(arguments.timeout));
    action(store, arguments);
  });
  return *command;
}

void addJson(CLI::App& command, Arguments& arguments) {
  command.add_flag("--json", arguments.json, "Print JSON");
}

void addReading(CLI::App& app, Arguments& arguments) {
  CLI::App& listing = addCommand(app, "list", "Print parameters beside what they could be",
                                 LIST_NOTES, arguments, [](Store& store, const Arguments& given) {
                                   list(store, std::cout, given.filter, given.json);
                                 });
  listing.add_option("GLOB", arguments.filter.glob, "Names, with * and ?; all if it is left out");
  listing.add_flag("--changed", arguments.filter.changed, "Only what is not at its default");
  listing.add_flag("--unsaved", arguments.filter.unsaved, "Only what is not as saved");
  listing.add_flag("--file-only", arguments.filter.fileOnly,
                   "Only what records of the bridge do not carry");
  addJson(listing, arguments);

  CLI::App& describing = addCommand(app, "describe", "Tell what parameters mean", DESCRIBE_NOTES,
                                    arguments, [](Store& store, const Arguments& given) {
                                      describe(store, std::cout, given.name, given.json);
                                    });
  describing
      .add_option("NAME", arguments.name, "A parameter, with or without its group, or a group")
      ->required();
  addJson(describing, arguments);

  CLI::App& getting = addCommand(
      app, "get", "Print the values of parameters", GET_NOTES, arguments,
      [](Store& store, const Arguments& given) { get(store, std::cout, given.names, given.json); });
  getting.add_option("GROUP.NAME", arguments.names, "The parameters")->required();
  addJson(getting, arguments);

  CLI::App& showing = addCommand(app, "show", "Print all settings, a group or a user", SHOW_NOTES,
                                 arguments, [](Store& store, const Arguments& given) {
                                   show(store, std::cout, given.name, given.secrets);
                                 });
  showing.add_option("GROUP", arguments.name, "The group; all if it is left out");
  showing.add_flag("--secrets", arguments.secrets, "Print secrets instead of (hidden)");
}

void addSet(CLI::App& app, Arguments& arguments) {
  CLI::App& command = addCommand(app, "set", "Change parameters", SET_NOTES, arguments,
                                 [](Store& store, const Arguments& given) {
                                   set(store, std::cout, given.names, std::cin, given.save);
                                 });
  command.add_option("GROUP.NAME=VALUE", arguments.names, "The parameters and their values")
      ->required();
  command.add_flag("--save", arguments.save, "Save the settings then");
}

void addUserCommands(CLI::App& app, Arguments& arguments) {
  CLI::App& user = *app.add_subcommand("user", "Look at and change the user list");
  user.require_subcommand(1);
  const auto addName = [&](CLI::App& command) {
    command.add_option("NAME", arguments.name, "The user's name")->required();
  };

  addJson(addCommand(user, "list", "Print the users' names", USER_LIST_NOTES, arguments,
                     [](Store& store, const Arguments& given) {
                       listUsers(store, std::cout, given.json);
                     }),
          arguments);
  addName(addCommand(user, "show", "Print the fields of a user", USER_SHOW_NOTES, arguments,
                     [](Store& store, const Arguments& given) {
                       show(store, std::cout, userName(given.name), true);
                     }));
  CLI::App& add = addCommand(
      user, "add", "Append a user", USER_ADD_NOTES, arguments,
      [](Store& store, const Arguments& given) { addUser(store, given.name, given.names); });
  addName(add);
  add.add_option("FIELD=VALUE", arguments.names, "Fields of the user and their values");
  CLI::App& change = addCommand(user, "set", "Change fields of a user", USER_SET_NOTES, arguments,
                                [](Store& store, const Arguments& given) {
                                  setUser(store, std::cout, given.name, given.names);
                                });
  addName(change);
  change.add_option("FIELD=VALUE", arguments.names, "Fields and their values")->required();
  CLI::App& rename = addCommand(
      user, "rename", "Give a user another name", USER_RENAME_NOTES, arguments,
      [](Store& store, const Arguments& given) { renameUser(store, given.name, given.newName); });
  addName(rename);
  rename.add_option("NEW-NAME", arguments.newName, "The new name")->required();
  addCommand(user, "del", "Remove users", USER_DEL_NOTES, arguments,
             [](Store& store, const Arguments& given) { deleteUsers(store, given.names); })
      .add_option("NAME", arguments.names, "The users")
      ->required();
}

void addOthers(CLI::App& app, Arguments& arguments) {
  addCommand(app, "save", "Write the settings file", SAVE_NOTES, arguments,
             [](Store& store, const Arguments& given) {
               store.save(given.force);
               std::cout << "saved\n";
             })
      .add_flag("--force", arguments.force, "Save what the agent would not save otherwise");
  addCommand(app, "status", "Print the agent's state", STATUS_NOTES, arguments,
             [](Store& store, const Arguments& given) {
               given.findings ? findings(store, std::cout) : status(store, std::cout);
             })
      .add_flag("--findings", arguments.findings, "List what was found in the settings file");
  addCommand(app, "watch", "Print changes as they happen", WATCH_NOTES, arguments,
             [](Store& store, const Arguments& /*given*/) { watch(store, std::cout); });
}

/// A misplaced assignment may hold a secret: its value is not shown.
std::string withoutValue(const std::string& word) { return word.substr(0, word.find('=')); }

std::string usageError(const CLI::App& app, const CLI::ParseError& error) {
  std::string message = error.what();
  const std::vector<std::string> unknown = app.remaining();
  if (app.get_subcommands().empty() && !unknown.empty() && !unknown.front().starts_with('-')) {
    std::vector<std::string> commands;
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
      commands.push_back(command->get_name());
    }
    const std::string name = withoutValue(unknown.front());
    const std::string similar = text::similar(name, commands);
    message = "there is no command " + name;
    if (!similar.empty()) message += "; did you mean " + similar + "?";
  } else if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ExtrasError)) {
    message = withoutValue(message);
  }
  return text::escaped(message) + " (see lparamsctl --help)";
}

}  // namespace

void runCommandLine(int argc, char** argv) {
  Arguments arguments;
  CLI::App app(DESCRIPTION, "lparamsctl");
  app.fallthrough();
  app.require_subcommand(1);
  app.set_version_flag("--version", "lparamsctl " LPARAMS_VERSION ", bridge protocol " +
                                        std::to_string(bridge::PROTOCOL_VERSION) + ", catalogue " +
                                        schema::ownHash());
  app.add_option("--socket", arguments.socketPath, "The agent's socket")
      ->type_name("PATH")
      ->envname("LPARAMS_SOCKET")
      ->capture_default_str();
  app.add_option("--timeout", arguments.timeout, "How long to wait for the agent")
      ->type_name("SECONDS")
      ->check(CLI::Range(1, 86400))
      ->capture_default_str();
  addReading(app, arguments);
  addSet(app, arguments);
  addUserCommands(app, arguments);
  addOthers(app, arguments);
  // Last, because sub-commands take over what is set before them.
  app.footer(std::string(NOTES) + "\n\n" + programs::EXIT_STATUSES);

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() != 0) throw Failure(programs::EXIT_USAGE, usageError(app, error));
    (void)app.exit(error);  // prints the help or the version
  }
  if (!std::cout.flush()) throw Failure(programs::EXIT_IO, "cannot write the output");
}

}  // namespace client
