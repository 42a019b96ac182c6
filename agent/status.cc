#include "agent/status.h"

#include <unistd.h>

#include <ctime>
#include <nlohmann/json.hpp>

#include "agent/base/json_text.h"
#include "agent/base/standard_streams.h"
#include "schema/schema.h"
#include "text/utc.h"

namespace agent {
namespace {

using nlohmann::json;

json orNull(const std::string& text) { return text.empty() ? json() : json(text); }

/// What is found in the settings file, each as an object of texts.
std::string listOf(const inspection::Findings& findings) {
  std::string list;
  for (const inspection::Finding& finding : findings.first) {
    JsonObject entry;
    entry.add("what", inWords(finding.kind));
    for (const auto& [name, value] : fieldsOf(finding)) entry.add(name, value);
    list.append(list.empty() ? "" : ",").append(entry.text());
  }
  return "[" + list + "]";
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
  JsonObject status;
  status.add("version", LPARAMS_VERSION);
  status.add("pid", ::getpid());
  status.add("startTime", sources.begin.time);
  status.add("uptime", duration_cast<seconds>(steady_clock::now() - sources.begin.tick).count());
  status.add("stateDir", sources.options.stateDir);
  status.add("strict", !sources.options.acceptAny);
  status.add("catalogue", schema::ownHash());
  status.add("savedHash", saved ? json(saved->open) : json());
  status.add("runningHash", running.open);
  status.add("degraded", orNull(state.degradedReason));
  status.add("disk", orNull(state.disk));
  status.add("changed", changed);
  status.add("lastSave", state.lastSave ? json(text::utc(*state.lastSave)) : json());
  status.add("lastFailure", orNull(state.lastFailure));
  status.add("history", sources.history.newest());
  status.add("historyProblem", orNull(sources.history.problem()));
  status.add("pendingConfirmation", waits ? json(text::utc(*waits)) : json());
  status.add("confirmationProblem", orNull(sources.confirmation.problem));
  status.add("sessions", sources.bridge.sessions());
  status.add("watchers", counts.watchers);
  status.add("writes", counts.writes);
  status.add("saves", counts.saves);
  status.add("failedSaves", counts.failedSaves);
  status.add("refusals", counts.refusals);
  status.add("groupProblem", orNull(sources.socketGroup.problem()));
  status.add("logClosed", logIsClosed());
  status.add("findings", state.findings.count);
  status.addText("findingList", listOf(state.findings));
  if (mayWrite) {
    status.add("savedHashWithSecrets", saved ? json(saved->whole) : json());
    status.add("runningHashWithSecrets", running.whole);
  }
  return status.text();
}

}  // namespace agent
