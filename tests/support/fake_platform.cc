#include "tests/support/fake_platform.h"

#include "platform/paths_service.h"

namespace testing_support {

FakePlatform& fakePlatform() {
  static FakePlatform platform;
  return platform;
}

}  // namespace testing_support

using testing_support::fakePlatform;

void AddCommandListener(CommandListener* listener) {
  fakePlatform().listeners.push_back(listener);
  fakePlatform().listenerCalls.emplace_back("add");
}

void DelCommandListener(CommandListener* listener) {
  std::erase(fakePlatform().listeners, listener);
  fakePlatform().listenerCalls.emplace_back("del");
}

bool _BridgeServerSide_AuthSession(BridgeSession& session, ModuleIdType module, long level) {
  fakePlatform().authRequests.push_back({&session, module, level});
  return fakePlatform().authorised;
}

std::string systemVarDir() {
  ++fakePlatform().varDirCalls;
  return fakePlatform().varDir;
}
