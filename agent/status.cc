#include "agent/status.h"

#include <unistd.h>

#include <ctime>
#include <nlohmann/json.hpp>

#include "agent/base/standard_streams.h"
#include "schema/schema.h"

namespace agent {
namespace {

using nlohmann::json;

json orNull(const std::string& text) { return text.empty() ? json() : json(text); }

json utc(const std::optional<std::time_t>& time) {
  if (!time) return {};
  std::tm fields{};
  (void)::gmtime_r(&*time, &fields);
  char text[32];
  (void)std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &fields);
  return text;
}

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

std::string statusOf(const Options& options, LPARAMS::Server::Server_t& server,
                     const SettingsKeeper& keeper, const History& history,
                     const BridgeServer& bridge, const SocketGroup& socketGroup) {
  const SettingsKeeper::State state = keeper.state();
  const json status = {
      {"version", LPARAMS_VERSION},
      {"pid", ::getpid()},
      {"stateDir", options.stateDir},
      {"strict", !options.acceptAny},
      {"catalogue", schema::ownHash()},
      {"degraded", orNull(state.degradedReason)},
      {"disk", orNull(state.disk)},
      {"changed", server.isChanged()},
      {"lastSave", utc(state.lastSave)},
      {"lastFailure", orNull(state.lastFailure)},
      {"history", history.newest()},
      {"historyProblem", orNull(history.problem())},
      {"sessions", bridge.sessions()},
      {"groupProblem", orNull(socketGroup.problem())},
      {"logClosed", logIsClosed()},
      {"findings", state.findings.count},
      {"findingList", listOf(state.findings)},
  };
  // A path may hold any bytes; JSON holds UTF-8.
  return status.dump(-1, ' ', false, json::error_handler_t::replace);
}

}  // namespace agent
