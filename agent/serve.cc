#include "agent/serve.h"

#include <asio/io_context.hpp>
#include <asio/signal_set.hpp>
#include <asio/steady_timer.hpp>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>

#include "agent/bridge/authorisation.h"
#include "agent/bridge/bridge_server.h"
#include "agent/bridge/change_tracker.h"
#include "agent/bridge/command_service.h"
#include "agent/bridge/record_check.h"
#include "agent/exit_codes.h"
#include "agent/log.h"
#include "agent/service_manager.h"
#include "agent/status.h"

namespace agent {
namespace {

constexpr std::chrono::seconds DRAIN_LIMIT{15};  // for commands that run when the agent is stopped

/// Tells the service manager, again and again, that the bridge's threads do their work.
class Watchdog {
 public:
  explicit Watchdog(asio::io_context& io) : timer_(io), interval_(watchdogInterval()) { tick(); }
  void stop() { timer_.cancel(); }

 private:
  void tick() {
    if (!interval_) return;
    timer_.expires_after(*interval_);
    timer_.async_wait([this](const asio::error_code& cancelled) {
      if (cancelled) return;
      notifyServiceManager("WATCHDOG=1");
      tick();
    });
  }

  asio::steady_timer timer_;
  const std::optional<std::chrono::microseconds> interval_;
};

/// Ends the process unless it is asked to stop within the limit.
void enforceDrainLimit(const std::stop_token& stop) {
  std::mutex mutex;
  std::unique_lock lock(mutex);
  std::condition_variable_any never;
  (void)never.wait_for(lock, stop, DRAIN_LIMIT, [] { return false; });
  if (stop.stop_requested()) return;
  log(Level::Error, "a command did not end in time; what was not saved is lost");
  std::_Exit(EXIT_STUCK);
}

}  // namespace

void serve(const Options& options, LPARAMS::Server::Server_t& server, SettingsKeeper& keeper) {
  const AccessRules rules(*server.ADMIN, options.adminGroup);
  std::optional<RecordCheck> check;
  if (!options.acceptAny) check.emplace(server, options.maxUsers);
  ChangeTracker changes(server);

  asio::io_context io(1);  // runs on this thread alone
  std::optional<BridgeServer> bridge;
  CommandService service(changes, check ? &*check : nullptr,
                         [&] { return statusOf(options, server, keeper, *bridge); });
  bridge.emplace(io, options.socket, AccessRules::numberOf(rules.adminGroup()), service);

  Watchdog watchdog(io);
  std::jthread drainLimit;
  asio::signal_set signals(io, SIGTERM, SIGINT);
  signals.async_wait([&](const asio::error_code& error, int signal) {
    if (error) return;
    log(Level::Info, "stopping", {{"signal", signal}});
    notifyServiceManager("STOPPING=1");
    drainLimit = std::jthread(enforceDrainLimit);
    watchdog.stop();
    bridge->stop();
  });
  log(Level::Info, "listening", {{"socket", options.socket}});
  notifyServiceManager("READY=1");

  io.run();
}

}  // namespace agent
