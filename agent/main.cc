// The reference agent: loads the settings module, keeps its settings safe and serves its commands
// on a Unix stream socket.
#include <malloc.h>
#include <sys/stat.h>

#include <algorithm>
#include <csignal>
#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "agent/base/end_signals.h"
#include "agent/base/exit_status.h"
#include "agent/base/log.h"
#include "agent/base/standard_streams.h"
#include "agent/base/start_failure.h"
#include "agent/history/history.h"
#include "agent/history/recorded_save.h"
#include "agent/load_settings.h"
#include "agent/module.h"
#include "agent/options.h"
#include "agent/save_hook.h"
#include "agent/serve.h"
#include "agent/services/paths_service.h"
#include "agent/state/recovery.h"
#include "agent/state/settings_keeper.h"
#include "agent/state/state_directory.h"

namespace agent {
namespace {

/// Returns the exit status.
int endWithUnsaved(const Options& options, Module& module, SettingsKeeper& keeper,
                   History& history) {
  if (!module.server().isChanged()) return EXIT_OK;
  if (!options.saveOnExit) {
    log(Level::Warning, "stopped with changes that were not saved and are lost");
    return EXIT_OK;
  }
  const std::string failure =
      saveRecorded(keeper, history, false, Author::self(), "saved at the agent's end").failure;
  if (failure.empty()) return EXIT_OK;
  log(Level::Error, "the changes could not be saved at the end", {{"reason", failure}});
  return EXIT_IO;
}

/// Returns the exit status.
int run(const Options& options) {
  const StateDirectory directory(options.stateDir);
  std::optional<size_t> importing;  // bytes
  StartingPoint start = startStep(EXIT_BAD_FILE, [&] {
    StartingPoint prepared = prepareStart(directory, options.allowDefaults);
    if (prepared.source == StartingPoint::FirstStart) importing = keepLegacySettings(directory);
    return prepared;
  });
  setSystemVarDir(directory.path());

  Module module(options.module);
  LoadOutcome loaded = loadSettings(module.server(), directory, start, importing, options.maxUsers);
  SettingsKeeper keeper(module.server(), directory, options.maxUsers);
  startStep(EXIT_IO, [&] {
    keeper.adopt(std::move(start), std::move(loaded.degradedReason), loaded.reports,
                 std::move(loaded.findings));
  });
  History history(directory, options.history);
  if (keeper.state().degradedReason.empty()) history.found(keeper.savedText());
  const SaveHook hook(module.server(), keeper, history);

  serve(options, module.server(), keeper, history);
  const int status = endWithUnsaved(options, module, keeper, history);
  log(Level::Info, "stopped");
  return status;
}

/// Frames and replies go back to the system as soon as they are freed. The library's limit would
/// grow with the first large one, in 64 bit beyond the largest frame, and each thread keep its own
/// (mallopt(3)).
void keepLargeBlocksApart() { (void)::mallopt(M_MMAP_THRESHOLD, 256 * 1024); }

int runOrExplain(int argc, char** argv) {
  // Before anything is told, of a wrong command line too.
  if (std::count(argv, argv + argc, std::string_view("--journal")) != 0) logForJournal();
  try {
    const std::string closed = openClosedStreams();
    const auto options = readOptions(argc, argv);
    if (!options) return EXIT_OK;
    if (!closed.empty()) {
      log(Level::Warning, "started with closed standard streams", {{"streams", closed}});
    }
    return run(*options);
  } catch (const StartFailure& failure) {
    log(Level::Error, failure.what());
    return failure.exitStatus;
  } catch (const std::exception& error) {
    log(Level::Error, error.what());
    return EXIT_UNAVAILABLE;
  }
}

}  // namespace
}  // namespace agent

int main(int argc, char** argv) {
  // A client that goes away and a file that grows too large are errors of one call, not ends.
  (void)std::signal(SIGPIPE, SIG_IGN);
  (void)std::signal(SIGXFSZ, SIG_IGN);
  (void)::umask(077);
  agent::holdEndSignals();
  agent::keepLargeBlocksApart();
  return agent::runOrExplain(argc, argv);
}
