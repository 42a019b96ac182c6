// lparamsctl: reads and changes the agent's settings from the command line.
#include <CLI/CLI.hpp>
#include <chrono>
#include <iostream>
#include <string>
#include <vector>

#include "bridge/protocol.h"
#include "client/commands.h"
#include "client/describe.h"
#include "client/failure.h"
#include "client/help.h"
#include "text/escape.h"

namespace client {
namespace {

/// What the command line says. Each sub-command uses its share of it.
struct Arguments {
  std::string socketPath = "/run/lparams/agent.sock";
  unsigned timeout = 30;  // seconds
  bool secrets = false;
  bool force = false;
  bool findings = false;
  std::string name;
  std::vector<std::string> assignments;
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

void addShow(CLI::App& app, Arguments& arguments) {
  const Action action = [](Store& store, const Arguments& given) {
    show(store, std::cout, given.name, given.secrets);
  };
  CLI::App& command =
      addCommand(app, "show", "Print all settings, or one group", SHOW_NOTES, arguments, action);
  command.add_option("GROUP", arguments.name, "The group; all if it is left out");
  command.add_flag("--secrets", arguments.secrets, "Print secrets instead of (hidden)");
}

void addGet(CLI::App& app, Arguments& arguments) {
  const Action action = [](Store& store, const Arguments& given) {
    get(store, std::cout, given.name);
  };
  CLI::App& command =
      addCommand(app, "get", "Print the value of one parameter", GET_NOTES, arguments, action);
  command.add_option("GROUP.NAME", arguments.name, "The parameter")->required();
}

void addSet(CLI::App& app, Arguments& arguments) {
  const Action action = [](Store& store, const Arguments& given) {
    set(store, given.assignments, std::cin);
  };
  CLI::App& command = addCommand(app, "set", "Change parameters", SET_NOTES, arguments, action);
  command.add_option("GROUP.NAME=VALUE", arguments.assignments, "The parameters and their values")
      ->required();
}

void addUserCommands(CLI::App& app, Arguments& arguments) {
  CLI::App* const user = app.add_subcommand("user", "Add or remove an entry of the user list");
  user->require_subcommand(1);

  const Action addAction = [](Store& store, const Arguments& given) {
    addUser(store, given.name, given.assignments);
  };
  CLI::App& add = addCommand(*user, "add", "Append an entry", USER_ADD_NOTES, arguments, addAction);
  add.add_option("NAME", arguments.name, "The new user's name")->required();
  add.add_option("FIELD=VALUE", arguments.assignments, "Fields of the entry and their values");

  const Action deleteAction = [](Store& store, const Arguments& given) {
    deleteUser(store, given.name);
  };
  CLI::App& del =
      addCommand(*user, "del", "Remove an entry", USER_DEL_NOTES, arguments, deleteAction);
  del.add_option("NAME|INDEX", arguments.name, "The user")->required();
}

void addSave(CLI::App& app, Arguments& arguments) {
  const Action action = [](Store& store, const Arguments& given) {
    store.save(given.force);
    std::cout << "saved\n";
  };
  addCommand(app, "save", "Write the settings file", SAVE_NOTES, arguments, action)
      .add_flag("--force", arguments.force, "Save what the agent would not save otherwise");
}

void addStatus(CLI::App& app, Arguments& arguments) {
  const Action action = [](Store& store, const Arguments& given) {
    given.findings ? findings(store, std::cout) : status(store, std::cout);
  };
  addCommand(app, "status", "Print the agent's state", STATUS_NOTES, arguments, action)
      .add_flag("--findings", arguments.findings, "List what was found in the settings file");
}

void addDescribe(CLI::App& app, Arguments& arguments) {
  CLI::App* const command = app.add_subcommand("describe", "Tell what parameters mean");
  command->footer(DESCRIBE_NOTES);
  command->add_option("NAME", arguments.name, "A parameter, with or without its group, or a group")
      ->required();
  command->callback([&arguments] { describe(std::cout, arguments.name); });
}

void addWatch(CLI::App& app, Arguments& arguments) {
  addCommand(app, "watch", "Print changes as they happen", WATCH_NOTES, arguments,
             [](Store& store, const Arguments& /*given*/) { watch(store, std::cout); });
}

std::string usageError(const CLI::ParseError& error) {
  std::string message = error.what();
  // A misplaced assignment may hold a secret: its value is not shown.
  if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ExtrasError)) {
    message = message.substr(0, message.find('='));
  }
  return text::escaped(message) + " (see lparamsctl --help)";
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
  addDescribe(app, arguments);
  addSet(app, arguments);
  addUserCommands(app, arguments);
  addSave(app, arguments);
  addStatus(app, arguments);
  addWatch(app, arguments);
  app.footer(NOTES);  // last, because sub-commands take over what is set before them

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() != 0) throw Failure(ExitCode::Usage, usageError(error));
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
