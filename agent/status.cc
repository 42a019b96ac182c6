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

}  // namespace

std::string statusOf(const Options& options, LPARAMS::Server::Server_t& server,
                     const SettingsKeeper& keeper, const BridgeServer& bridge,
                     const SocketGroup& socketGroup) {
  const SettingsKeeper::State state = keeper.state();
  const json status = {
      {"version", LPARAMS_VERSION},      {"pid", ::getpid()},
      {"stateDir", options.stateDir},    {"strict", !options.acceptAny},
      {"catalogue", schema::ownHash()},  {"degraded", orNull(state.degradedReason)},
      {"disk", orNull(state.disk)},      {"changed", server.isChanged()},
      {"lastSave", utc(state.lastSave)}, {"lastFailure", orNull(state.lastFailure)},
      {"sessions", bridge.sessions()},   {"groupProblem", orNull(socketGroup.problem())},
      {"logClosed", logIsClosed()},
  };
  // A path may hold any bytes; JSON holds UTF-8.
  return status.dump(-1, ' ', false, json::error_handler_t::replace);
}

}  // namespace agent
