// The reference agent: loads the settings module, keeps its settings safe and serves its commands
// on a Unix stream socket.
#include <sys/stat.h>

#include <csignal>
#include <exception>
#include <optional>
#include <sstream>
#include <string>

#include "agent/exit_codes.h"
#include "agent/load_limit.h"
#include "agent/load_report.h"
#include "agent/log.h"
#include "agent/module.h"
#include "agent/options.h"
#include "agent/serve.h"
#include "agent/services/markup_count.h"
#include "agent/services/paths_service.h"
#include "agent/state/recovery.h"
#include "agent/state/save_hook.h"
#include "agent/state/settings_keeper.h"
#include "agent/state/settings_text.h"
#include "agent/state/state_directory.h"

namespace agent {
namespace {

/// Returns why the settings are not whole; empty if they are.
std::string loadSettings(LPARAMS::Server::Server_t& server, const StateDirectory& directory,
                         const StartingPoint& start, std::optional<size_t> importing) {
  std::ostringstream defaults;
  (void)server.save(defaults, 0);
  LoadReport report(server);
  bool loaded = false;
  {
    const LoadLimit limit(start.text.size() + importing.value_or(0));
    loaded = server.load(&report);
  }
  log(Level::Info, "settings loaded",
      {{"state-dir", directory.path()}, {"reports", report.reports()}});
  if (!loaded) return "the settings file was not read to its end";
  if (report.groupsMissing()) return "the settings file lacks groups";

  // The module takes what it cannot open for a file that is not there, and reports nothing.
  const bool onlyDefaults = report.reports() == 0 && server.rawSettings == defaults.str();
  if (onlyDefaults && start.source != StartingPoint::FirstStart &&
      withoutByteOrderMark(start.text) != server.rawSettings) {
    return "nothing was read from the settings file";
  }
  if (importing && markupDocumentsRead() == 0) {
    return "the settings of earlier versions could not be read";
  }
  return {};
}

/// Returns the exit status.
int endWithUnsaved(const Options& options, Module& module, SettingsKeeper& keeper) {
  if (!module.server().isChanged()) return EXIT_OK;
  if (!options.saveOnExit) {
    log(Level::Warning, "stopped with changes that were not saved and are lost");
    return EXIT_OK;
  }
  const std::string failure = keeper.save(false);
  if (failure.empty()) return EXIT_OK;
  log(Level::Error, "the changes could not be saved at the end", {{"reason", failure}});
  return EXIT_NOT_SAVED;
}

/// `phase` is what the exit status says if it throws.
int run(const Options& options, int& phase) {
  phase = EXIT_BAD_CONFIG;
  const StateDirectory directory(options.stateDir);
  StartingPoint start = prepareStart(directory, options.allowDefaults);
  std::optional<size_t> importing;  // bytes
  if (start.source == StartingPoint::FirstStart) importing = keepLegacySettings(directory);
  setSystemVarDir(directory.path());

  phase = EXIT_UNAVAILABLE;
  Module module(options.module);
  std::string doubt = loadSettings(module.server(), directory, start, importing);

  phase = EXIT_NOT_SAVED;
  SettingsKeeper keeper(module.server(), directory);
  keeper.adopt(std::move(start), std::move(doubt));
  const SaveHook hook(module.server(), keeper);

  phase = EXIT_UNAVAILABLE;
  serve(options, module.server(), keeper);
  const int status = endWithUnsaved(options, module, keeper);
  log(Level::Info, "stopped");
  return status;
}

int runOrExplain(const Options& options) {
  int phase = EXIT_UNAVAILABLE;
  try {
    return run(options, phase);
  } catch (const DirectoryInUse& error) {
    log(Level::Error, error.what());
    return EXIT_IN_USE;
  } catch (const std::exception& error) {
    log(Level::Error, error.what());
    return phase;
  }
}

}  // namespace
}  // namespace agent

int main(int argc, char** argv) {
  // A client that goes away and a file that grows too large are errors of one call, not ends.
  (void)std::signal(SIGPIPE, SIG_IGN);
  (void)std::signal(SIGXFSZ, SIG_IGN);
  (void)::umask(077);
  int exitCode = 0;
  const auto options = agent::readOptions(argc, argv, exitCode);
  if (!options) return exitCode;
  if (options->journal) agent::logForJournal();
  return agent::runOrExplain(*options);
}
