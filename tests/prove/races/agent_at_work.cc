#include "tests/prove/races/agent_at_work.h"

#include <unistd.h>

#include <csignal>
#include <optional>
#include <system_error>
#include <utility>

#include "agent/load_settings.h"
#include "agent/serve.h"
#include "agent/services/paths_service.h"
#include "agent/state/recovery.h"
#include "tests/agent/bridge/raw_client.h"

namespace races {
namespace {

constexpr size_t REVISIONS = 3;

/// A module is loaded when the agent says where its directory is.
const std::string& withDirectory(const agent::StateDirectory& directory,
                                 const std::string& module) {
  agent::setSystemVarDir(directory.path());
  return module;
}

agent::Options optionsFor(const std::string& directory) {
  agent::Options options;
  options.stateDir = directory;
  options.socket = directory + "agent.sock";
  return options;
}

/// Takes back what an agent that has ended did not see.
void forgetStops() {
  sigset_t stops;
  (void)::sigemptyset(&stops);
  (void)::sigaddset(&stops, SIGTERM);
  const timespec now{};
  while (::sigtimedwait(&stops, nullptr, &now) >= 0) continue;
}

bool isServed(const std::string& socket) try {
  return agent_testing::RawClient(socket).greet();
} catch (const std::system_error&) {
  return false;
}

}  // namespace

AgentAtWork::AgentAtWork(const std::string& module)
    : directory_(files_.path),
      module_(withDirectory(directory_, module)),
      options_(optionsFor(files_.path)),
      keeper_(server(), directory_),
      history_(directory_, REVISIONS),
      hook_(server(), keeper_, history_) {
  agent::StartingPoint start = agent::prepareStart(directory_, false);
  agent::LoadOutcome loaded =
      agent::loadSettings(server(), directory_, start, std::nullopt, options_.maxUsers);
  keeper_.adopt(std::move(start), std::move(loaded.degradedReason), loaded.reports,
                std::move(loaded.findings));
}

void AgentAtWork::start() {
  forgetStops();
  thread_ = std::thread([this] { agent::serve(options_, server(), keeper_, history_); });
  while (!isServed(socket())) (void)::usleep(1000);
}

void AgentAtWork::stop() { (void)::kill(::getpid(), SIGTERM); }

}  // namespace races
