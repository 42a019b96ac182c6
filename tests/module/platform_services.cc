#include "tests/module/platform_services.h"

#include "platform/paths_service.h"
#include "tests/module/call_log.h"

namespace host {
namespace {

PlatformServices services;

void recordListener(const char* call, const CommandListener& listener) {
  record(std::string(call) + " of module " + std::to_string(listener.moduleId));
}

}  // namespace

PlatformServices& platform() { return services; }

void resetPlatform(const std::string& varDir) {
  services.varDir = varDir;
  services.onVarDir = nullptr;
  services.authorised = true;
  services.onAdd = nullptr;
  services.onDel = nullptr;
}

}  // namespace host

void AddCommandListener(CommandListener* listener) {
  host::recordListener("AddCommandListener", *listener);
  if (host::services.onAdd) host::services.onAdd(*listener);
  host::services.listener = listener;
}

void DelCommandListener(CommandListener* listener) {
  host::recordListener("DelCommandListener", *listener);
  if (host::services.onDel) host::services.onDel(*listener);
  host::services.listener = nullptr;
}

bool _BridgeServerSide_AuthSession(BridgeSession& session, ModuleIdType module, long level) {
  host::record("authorise session " + std::to_string(session.number) + " for module " +
               std::to_string(module) + " at level " + std::to_string(level));
  return host::services.authorised;
}

std::string systemVarDir() {
  host::record("systemVarDir");
  if (host::services.onVarDir) host::services.onVarDir();
  return host::services.varDir;
}
