#include "agent/options.h"

#include <sys/un.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <utility>

#include "agent/base/start_failure.h"

namespace agent {
namespace {

std::string moduleBesideExecutable() {
  std::error_code error;
  const auto executable = std::filesystem::read_symlink("/proc/self/exe", error);
  return (executable.parent_path() / "lparams_server.so").string();
}

/// As messages and the state tell it, wherever the agent was started.
std::string absolute(const std::string& path) {
  std::error_code error;
  const auto whole = std::filesystem::absolute(path, error);
  return error ? path : whole.lexically_normal().string();
}

}  // namespace

std::optional<Options> readOptions(int argc, char** argv) {
  Options options;
  options.module = moduleBesideExecutable();

  CLI::App app(
      "Loads the settings module and offers its commands on a Unix stream socket, until "
      "SIGTERM, SIGINT or SIGHUP.",
      "lparams_agent");
  app.set_version_flag("--version", "lparams_agent " LPARAMS_VERSION);
  app.add_option("--state-dir", options.stateDir, "Directory of localsettings.ini")
      ->capture_default_str();
  app.add_option("--socket", options.socket, "Path of the socket, at most 107 bytes")
      ->capture_default_str();
  app.add_option("--module", options.module, "The settings module")->capture_default_str();
  app.add_option("--admin-group", options.adminGroup,
                 "Group whose members may write and save [the settings' ADMIN_GROUP]");
  app.add_option("--max-users", options.maxUsers, "Longest user list that is accepted")
      ->check(CLI::Range(0, 1'000'000))
      ->capture_default_str();
  app.add_option("--history", options.history, "How many revisions of the settings are kept")
      ->check(CLI::Range(1, 10'000))
      ->capture_default_str();
  app.add_flag("--accept-any", options.acceptAny,
               "Take every value from the bridge as it stands, like the module itself");
  app.add_flag("--allow-defaults", options.allowDefaults,
               "Start with the defaults although only damaged settings were found; those are kept");
  app.add_flag("--save-on-exit", options.saveOnExit, "Save unsaved changes at the end");
  app.add_flag("--journal", options.journal, "Begin log lines with the journal's priorities");
  app.footer(EXIT_STATUSES);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& outcome) {
    if (outcome.get_exit_code() != 0) {
      throw StartFailure(EXIT_USAGE, std::string(outcome.what()) + " (see lparams_agent --help)");
    }
    (void)app.exit(outcome);  // prints the help or the version
    return std::nullopt;
  }
  options.stateDir = absolute(options.stateDir);
  // One that would be too long for a socket may be short enough as it was given.
  if (std::string whole = absolute(options.socket); whole.size() < sizeof(sockaddr_un::sun_path)) {
    options.socket = std::move(whole);
  }
  // A name without a directory is looked for where the system keeps its libraries.
  if (options.module.find('/') != std::string::npos) options.module = absolute(options.module);
  return options;
}

}  // namespace agent
