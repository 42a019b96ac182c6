#include "agent/serve.h"

#include <asio/io_context.hpp>
#include <asio/signal_set.hpp>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <new>
#include <optional>
#include <stop_token>
#include <thread>

#include "agent/agent_commands.h"
#include "agent/base/end_signals.h"
#include "agent/base/exit_status.h"
#include "agent/base/log.h"
#include "agent/base/stop_wait.h"
#include "agent/bridge/authorisation.h"
#include "agent/bridge/bridge_server.h"
#include "agent/bridge/change_tracker.h"
#include "agent/bridge/command_service.h"
#include "agent/bridge/socket_group.h"
#include "agent/save_events.h"
#include "agent/service_manager.h"
#include "agent/service_status.h"
#include "agent/settings_locks.h"
#include "agent/status.h"
#include "agent/ticker.h"
#include "agent/watchdog.h"
#include "editing/record_check.h"
#include "schema/schema.h"

namespace agent {
namespace {

constexpr std::chrono::seconds DRAIN_LIMIT{15};  // for commands that run when the agent is stopped

constexpr std::chrono::seconds COUNTING_TIME{1};  // between the sums of what the log leaves out

/// Ends the process unless it is asked to stop within the limit.
void enforceDrainLimit(const std::stop_token& stop) {
  if (waitForStop(stop, DRAIN_LIMIT)) return;
  log(Level::Error, "a command did not end in time; what was not saved is lost");
  std::_Exit(EXIT_STUCK);
}

void limitDrain(std::jthread& thread) {
  try {
    thread = std::jthread(enforceDrainLimit);
  } catch (const std::exception& error) {
    log(Level::Warning, "the end has no time limit", {{"reason", error.what()}});
  }
}

/// Runs until there is no more work, whatever memory there is.
void run(asio::io_context& io) {
  for (;;) {
    try {
      (void)io.run();
      return;
    } catch (const std::bad_alloc&) {
      log(Level::Error, "no memory for an event");
    }
  }
}

}  // namespace

void serve(const Options& options, LPARAMS::Server::Server_t& server, SettingsKeeper& keeper,
           History& history) {
  // Made before anybody asks: the values of the JSON library that they are made of need memory to
  // be destroyed, and end the process where there is none.
  (void)schema::ownSchema();
  (void)schema::ownHash();
  const AccessRules rules(*server.ADMIN, options.adminGroup);
  const editing::RecordCheck check(server, options.maxUsers);
  ChangeTracker changes(server);

  asio::io_context io(1);  // runs on this thread alone
  std::optional<BridgeServer> bridge;
  std::optional<SocketGroup> socketGroup;
  std::optional<SettingsHashes> hashes;
  const Confirmation* confirmation = nullptr;  // of the commands
  const BeginOfService begin;
  CommandService service(server, keeper.writeTurn(), changes, options.acceptAny ? nullptr : &check,
                         [&](bool mayWrite) {
                           return statusOf(
                               {options, server, keeper, history, confirmation->state(), *bridge,
                                *socketGroup, service.events(), *hashes, begin},
                               mayWrite);
                         });
  const SaveEvents saveEvents(keeper, service.events());
  AgentCommands commands(server, keeper, history, check, service);
  hashes.emplace(server, changes, commands.saved());
  confirmation = &commands.confirmation();
  commands.confirmation().resume();
  bridge.emplace(io, options.socket, service);
  socketGroup.emplace(io, options.socket, rules, changes);

  std::jthread drainLimit;
  std::optional<Watchdog> watchdog;
  if (const auto interval = watchdogInterval()) {
    watchdog.emplace(
        io, [&] { passEveryLock(server); }, *interval, [] { notifyServiceManager("WATCHDOG=1"); });
  }
  ServiceStatus status;
  const auto tellStatus = [&] { status.tell(serviceStatus(options.socket, keeper.state())); };
  // What the log leaves out, and what there is for the manager to see.
  Ticker ticker(io, COUNTING_TIME, [&] {
    logLeftOut(LeftOut::Due);
    tellStatus();
  });
  asio::signal_set signals(io, SIGTERM, SIGINT);
  if (endsWithTerminal()) signals.add(SIGHUP);
  signals.async_wait([&](const asio::error_code& error, int signal) {
    if (error) return;
    // Another one would end the process before it has saved. The thread that is started holds them.
    holdEndSignals();
    limitDrain(drainLimit);
    log(Level::Info, "stopping", {{"signal", signal}});
    if (watchdog) watchdog->stop();
    bridge->stop();
    ticker.stop();
    // Last: they may find no memory.
    status.tell("stopping: commands that have begun are carried out");
    notifyServiceManager("STOPPING=1");
  });
  acceptEndSignals();
  log(Level::Info, "listening", {{"socket", options.socket}});
  tellStatus();
  notifyServiceManager("READY=1");

  run(io);
  logLeftOut(LeftOut::All);
}

}  // namespace agent
