#include "agent/save_hook.h"

#include <utility>

#include "agent/base/bridge_session.h"
#include "agent/history/recorded_save.h"

namespace agent {
namespace {

// The hook is a plain function; these are constant while commands run.
SettingsKeeper* g_keeper = nullptr;
History* g_history = nullptr;

int saveThroughKeeper(const char* /*section*/) {
  BridgeSession* session = BridgeSession::current();
  if (session == nullptr) {
    return saveRecorded(*g_keeper, *g_history, false, Author::self(), {}).failure.empty() ? 1 : 0;
  }
  BridgeSession::RunningCommand& command = session->command;
  RecordedSave save = saveRecorded(*g_keeper, *g_history, command.force,
                                   {session->uid, session->pid, session->program}, command.message);
  command.saveFailure = std::move(save.failure);
  command.revision = save.revision;
  return command.saveFailure.empty() ? 1 : 0;
}

}  // namespace

SaveHook::SaveHook(LPARAMS::Server::Server_t& server, SettingsKeeper& keeper, History& history)
    : server_(server) {
  g_keeper = &keeper;
  g_history = &history;
  server_.saveHook = saveThroughKeeper;
}

SaveHook::~SaveHook() {
  server_.saveHook = nullptr;
  g_keeper = nullptr;
  g_history = nullptr;
}

}  // namespace agent
