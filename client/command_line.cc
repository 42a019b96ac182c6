#include "client/command_line.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "bridge/protocol.h"
#include "client/context.h"
#include "client/failure.h"
#include "client/verbs/verbs.h"
#include "schema/schema.h"
#include "text/escape.h"
#include "text/similar.h"

namespace client {
namespace {

constexpr const char* DESCRIPTION =
    "Shows and changes the settings of the VPN gateway agent, over the socket of its bridge.";

constexpr const char* NOTES =
    R"~(Parameters are called GROUP.NAME, for example IKE.IKE_PORT, or USERS[USER].NAME for those of a
user; where no user has the name USER, it is an index, counted from 0. The groups are IKE, LOG,
UPDATE, POLICY, ADMIN and USERS. "lparamsctl COMMAND --help" tells more about a command.

Changes take effect in the agent's memory at once; "lparamsctl save" writes them to its
settings file.

Examples:
  lparamsctl list '*TIMEOUT*'
  lparamsctl get IKE.IKE_PORT
  lparamsctl set LOG.LOG_LEVEL=_LL_DETAILS IKE.NATT_PORT=4500 && lparamsctl save)~";

/// In the order of the help.
constexpr void (*VERBS[])(CLI::App&, Context&) = {
    addList,     addDescribe, addGet,   addShow,   addSet,     addUser,  addDiff,
    addRevert,   addReset,    addApply, addBackup, addRestore, addEdit,  addHistory,
    addRollback, addConfirm,  addSave,  addStatus, addWatch,   addCheck, addFmt,
};

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

programs::ExitStatus runCommandLine(int argc, char** argv) {
  Context context;
  CLI::App app(DESCRIPTION, "lparamsctl");
  app.fallthrough();
  app.require_subcommand(1);
  app.set_version_flag("--version", "lparamsctl " LPARAMS_VERSION ", bridge protocol " +
                                        std::to_string(bridge::PROTOCOL_VERSION) + ", catalogue " +
                                        schema::ownHash());
  app.add_option("--socket", context.socketPath, "The agent's socket")
      ->type_name("PATH")
      ->envname("LPARAMS_SOCKET")
      ->capture_default_str();
  app.add_option("--timeout", context.timeout, "How long to wait for the agent")
      ->type_name("SECONDS")
      ->check(CLI::Range(1, 86400))
      ->capture_default_str();
  app.add_option("--file", context.file, "A settings file in place of an agent")->type_name("FILE");
  for (const auto add : VERBS) add(app, context);
  // Last, because sub-commands take over what is set before them.
  app.footer(std::string(NOTES) + "\n\n" + programs::EXIT_STATUSES);

  try {
    if (argc > 2 && argv[1] == std::string_view("complete")) {
      complete(app, context, {argv + 2, argv + argc});
    } else {
      app.parse(argc, argv);
    }
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() != 0) throw Failure(programs::EXIT_USAGE, usageError(app, error));
    (void)app.exit(error);  // prints the help or the version
  }
  if (!std::cout.flush()) throw Failure(programs::EXIT_IO, "cannot write the output");
  return context.status;
}

}  // namespace client
