// The reference agent: loads the settings module and serves its commands on a Unix stream socket.
#include <sys/stat.h>

#include <algorithm>
#include <asio/io_context.hpp>
#include <asio/signal_set.hpp>
#include <csignal>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "agent/bridge_server.h"
#include "agent/exit_codes.h"
#include "agent/load_report.h"
#include "agent/log.h"
#include "agent/module.h"
#include "agent/options.h"
#include "agent/paths_service.h"
#include "agent/settings_file_check.h"

namespace agent {
namespace {

constexpr int BRIDGE_THREADS = 4;

void checkState(const Options& options) {
  if (!std::filesystem::is_directory(options.stateDir)) {
    throw std::runtime_error("state directory " + options.stateDir + " is not a directory");
  }
  setSystemVarDir(options.stateDir);
  checkSettingsFile(options.stateDir + "/localsettings.ini");
}

void loadSettings(Module& module, const Options& options) {
  LoadReport report(module.server());
  const bool loaded = module.server().load(&report);
  log(loaded ? Level::Info : Level::Warning, loaded ? "settings loaded" : "settings loaded in part",
      {{"state-dir", options.stateDir}, {"reports", report.reports()}});
}

/// Returns after SIGTERM or SIGINT, when every running command has been answered.
void serve(const Options& options) {
  asio::io_context io(BRIDGE_THREADS);
  BridgeServer server(io, options.socket);
  asio::signal_set signals(io, SIGTERM, SIGINT);
  signals.async_wait([&](const asio::error_code& error, int signal) {
    if (error) return;
    log(Level::Info, "stopping", {{"signal", signal}});
    server.stop();
  });
  log(Level::Info, "listening", {{"socket", options.socket}});

  std::vector<std::jthread> threads;
  for (int i = 1; i < BRIDGE_THREADS; ++i) threads.emplace_back([&] { io.run(); });
  io.run();
}

int run(const Options& options) {
  try {
    checkState(options);
  } catch (const std::exception& error) {
    log(Level::Error, error.what());
    return EXIT_BAD_CONFIG;
  }
  try {
    Module module(options.module);
    loadSettings(module, options);
    serve(options);
  } catch (const std::exception& error) {
    log(Level::Error, error.what());
    return EXIT_UNAVAILABLE;
  }
  log(Level::Info, "stopped");
  return EXIT_OK;
}

}  // namespace
}  // namespace agent

int main(int argc, char** argv) {
  (void)std::signal(SIGPIPE, SIG_IGN);
  (void)::umask(077);
  int exitCode = 0;
  const auto options = agent::readOptions(argc, argv, exitCode);
  return options ? agent::run(*options) : exitCode;
}
