#include "agent/status.h"

#include <unistd.h>

#include <ctime>
#include <nlohmann/json.hpp>

#include "agent/base/standard_streams.h"
#include "schema/schema.h"
#include "text/utc.h"

namespace agent {
namespace {

using nlohmann::json;

json orNull(const std::string& text) { return text.empty() ? json() : json(text); }

/// What is found in the settings file, each as an object of texts.
json listOf(const inspection::Findings& findings) {
  json list = json::array();
  for (const inspection::Finding& finding : findings.first) {
    json entry = {{"what", inWords(finding.kind)}};
    for (const auto& [name, value] : fieldsOf(finding)) entry[name] = value;
    list.push_back(std::move(entry));
  }
  return list;
}

}  // namespace

BeginOfService::BeginOfService() : time(text::utc(std::time(nullptr))) {}

std::string statusOf(const StatusSources& sources, bool mayWrite) {
  using namespace std::chrono;
  const SettingsKeeper::State state = sources.keeper.state();
  const Events::Counts counts = sources.events.counts();
  // Before the hash: the text that is made for it gives an enumeration without a name another
  // value.
  const bool changed = sources.server.isChanged();
  const schema::SettingsHash running = sources.hashes.running();
  const auto saved = sources.hashes.saved();
  const auto waits = sources.confirmation.until;
  json status = {
      {"version", LPARAMS_VERSION},
      {"pid", ::getpid()},
      {"startTime", sources.begin.time},
      {"uptime", duration_cast<seconds>(steady_clock::now() - sources.begin.tick).count()},
      {"stateDir", sources.options.stateDir},
      {"strict", !sources.options.acceptAny},
      {"catalogue", schema::ownHash()},
      {"savedHash", saved ? json(saved->open) : json()},
      {"runningHash", running.open},
      {"degraded", orNull(state.degradedReason)},
      {"disk", orNull(state.disk)},
      {"changed", changed},
      {"lastSave", state.lastSave ? json(text::utc(*state.lastSave)) : json()},
      {"lastFailure", orNull(state.lastFailure)},
      {"history", sources.history.newest()},
      {"historyProblem", orNull(sources.history.problem())},
      {"pendingConfirmation", waits ? json(text::utc(*waits)) : json()},
      {"confirmationProblem", orNull(sources.confirmation.problem)},
      {"sessions", sources.bridge.sessions()},
      {"watchers", counts.watchers},
      {"writes", counts.writes},
      {"saves", counts.saves},
      {"failedSaves", counts.failedSaves},
      {"refusals", counts.refusals},
      {"groupProblem", orNull(sources.socketGroup.problem())},
      {"logClosed", logIsClosed()},
      {"findings", state.findings.count},
      {"findingList", listOf(state.findings)},
  };
  if (mayWrite) {
    status["savedHashWithSecrets"] = saved ? json(saved->whole) : json();
    status["runningHashWithSecrets"] = running.whole;
  }
  // A path may hold any bytes; JSON holds UTF-8.
  return status.dump(-1, ' ', false, json::error_handler_t::replace);
}

}  // namespace agent
