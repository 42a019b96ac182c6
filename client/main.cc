// lparamsctl: reads and changes the agent's settings from the command line.
#include <CLI/CLI.hpp>
#include <iostream>
#include <string>
#include <vector>

#include "bridge/protocol.h"
#include "client/commands.h"
#include "client/failure.h"
#include "client/help.h"
#include "client/quote.h"

namespace client {
namespace {

/// What the command line says. Each sub-command uses its share of it.
struct Arguments {
  std::string socketPath = "/run/lparams/agent.sock";
  unsigned timeout = 30;  // seconds
  bool secrets = false;
  bool force = false;
  std::string name;
  std::vector<std::string> assignments;

  Store store() const { return Store(socketPath, std::chrono::seconds(timeout)); }
};

CLI::App* addCommand(CLI::App& parent, const char* name, const char* description,
                     const char* notes) {
  CLI::App* const command = parent.add_subcommand(name, description);
  command->footer(notes);
  return command;
}

void addShow(CLI::App& app, Arguments& arguments) {
  CLI::App* const command = addCommand(app, "show", "Print all settings, or one group", SHOW_NOTES);
  command->add_option("GROUP", arguments.name, "The group; all if it is left out");
  command->add_flag("--secrets", arguments.secrets, "Print secrets instead of (hidden)");
  command->callback([&arguments] {
    Store store = arguments.store();
    show(store, std::cout, arguments.name, arguments.secrets);
  });
}

void addGet(CLI::App& app, Arguments& arguments) {
  CLI::App* const command = addCommand(app, "get", "Print the value of one parameter", GET_NOTES);
  command->add_option("GROUP.NAME", arguments.name, "The parameter")->required();
  command->callback([&arguments] {
    Store store = arguments.store();
    get(store, std::cout, arguments.name);
  });
}

void addSet(CLI::App& app, Arguments& arguments) {
  CLI::App* const command = addCommand(app, "set", "Change parameters", SET_NOTES);
  command->add_option("GROUP.NAME=VALUE", arguments.assignments, "The parameters and their values")
      ->required();
  command->callback([&arguments] {
    Store store = arguments.store();
    set(store, arguments.assignments, std::cin);
  });
}

void addUserCommands(CLI::App& app, Arguments& arguments) {
  CLI::App* const user = app.add_subcommand("user", "Add or remove an entry of the user list");
  user->require_subcommand(1);

  CLI::App* const add = addCommand(*user, "add", "Append an entry", USER_ADD_NOTES);
  add->add_option("NAME", arguments.name, "The new user's name")->required();
  add->add_option("FIELD=VALUE", arguments.assignments, "Fields of the entry and their values");
  add->callback([&arguments] {
    Store store = arguments.store();
    addUser(store, arguments.name, arguments.assignments);
  });

  CLI::App* const del = addCommand(*user, "del", "Remove an entry", USER_DEL_NOTES);
  del->add_option("NAME|INDEX", arguments.name, "The user")->required();
  del->callback([&arguments] {
    Store store = arguments.store();
    deleteUser(store, arguments.name);
  });
}

void addSave(CLI::App& app, Arguments& arguments) {
  CLI::App* const command = addCommand(app, "save", "Write the settings file", SAVE_NOTES);
  command->add_flag("--force", arguments.force, "Save what the agent would not save otherwise");
  command->callback([&arguments] {
    arguments.store().save(arguments.force);
    std::cout << "saved\n";
  });
}

void addStatus(CLI::App& app, Arguments& arguments) {
  CLI::App* const command = addCommand(app, "status", "Print the agent's state", STATUS_NOTES);
  command->callback([&arguments] {
    Store store = arguments.store();
    status(store, std::cout);
  });
}

void addWatch(CLI::App& app, Arguments& arguments) {
  CLI::App* const command = addCommand(app, "watch", "Print changes as they happen", WATCH_NOTES);
  command->callback([&arguments] {
    Store store = arguments.store();
    watch(store, std::cout);
  });
}

/// Cut off at the first "=": a misplaced assignment may hold a secret.
std::string usageError(const std::string& message) {
  return escaped(message.substr(0, message.find('='))) + " (see lparamsctl --help)";
}

ExitCode run(int argc, char** argv) {
  Arguments arguments;
  CLI::App app(DESCRIPTION, "lparamsctl");
  app.fallthrough();
  app.require_subcommand(1);
  app.set_version_flag("--version", "lparamsctl " LPARAMS_VERSION ", bridge protocol " +
                                        std::to_string(bridge::PROTOCOL_VERSION));
  app.add_option("--socket", arguments.socketPath, "The agent's socket")
      ->type_name("PATH")
      ->envname("LPARAMS_SOCKET")
      ->capture_default_str();
  app.add_option("--timeout", arguments.timeout, "How long to wait for the agent")
      ->type_name("SECONDS")
      ->check(CLI::Range(1, 86400))
      ->capture_default_str();
  addShow(app, arguments);
  addGet(app, arguments);
  addSet(app, arguments);
  addUserCommands(app, arguments);
  addSave(app, arguments);
  addStatus(app, arguments);
  addWatch(app, arguments);
  app.footer(NOTES);  // last, because sub-commands take over what is set before them

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() != 0) throw Failure(ExitCode::Usage, usageError(error.what()));
    (void)app.exit(error);  // prints the help or the version
  }
  if (!std::cout.flush()) throw Failure(ExitCode::NoAgent, "cannot write the output");
  return ExitCode::Done;
}

}  // namespace
}  // namespace client

int main(int argc, char** argv) {
  using client::ExitCode;
  ExitCode code = ExitCode::NoAgent;
  std::string message;
  try {
    return static_cast<int>(client::run(argc, argv));
  } catch (const client::Failure& failure) {
    code = failure.code;
    message = failure.what();
  } catch (const std::exception& error) {
    message = error.what();
  }
  std::cerr << "lparamsctl: " << message << '\n';
  return static_cast<int>(code);
}
