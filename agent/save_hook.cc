#include "agent/save_hook.h"

#include <string>

#include "agent/base/bridge_session.h"

namespace agent {
namespace {

SettingsKeeper* g_keeper = nullptr;  // the hook is a plain function; constant while commands run

int saveThroughKeeper(const char* /*section*/) {
  BridgeSession* session = BridgeSession::current();
  const bool force = session != nullptr && session->command.force;
  const std::string failure = g_keeper->save(force);
  if (failure.empty()) return 1;
  if (session != nullptr) session->command.saveFailure = failure;
  return 0;
}

}  // namespace

SaveHook::SaveHook(LPARAMS::Server::Server_t& server, SettingsKeeper& keeper) : server_(server) {
  g_keeper = &keeper;
  server_.saveHook = saveThroughKeeper;
}

SaveHook::~SaveHook() {
  server_.saveHook = nullptr;
  g_keeper = nullptr;
}

}  // namespace agent
