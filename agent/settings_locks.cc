#include "agent/settings_locks.h"

#include <unistd.h>

#include <string>

#include "agent/base/bridge_session.h"
#include "agent/bridge/listener_registry.h"
#include "lparams/interface/commands.h"

namespace agent {
namespace {

using namespace LPARAMS::Server;

void pass(basekit::ObjectLevelLockable& object) {
  const basekit::ObjectLevelLockable::Lock lock(object);
}

/// The module's own lock is not to be seen from outside. A read of a group that there is not takes
/// it, and no other.
void passModuleLock() {
  BridgeSession session(::geteuid(), ::getegid(), ::getpid());
  const std::string noGroup(sizeof(uint32_t), '\0');  // a name without a byte
  std::string nothing;
  (void)listenerRegistry().execute(session, LPARAMS_MODULE_ID, READ_GROUP, noGroup, nothing);
}

}  // namespace

void passEveryLock(Server_t& server) {
  passModuleLock();
  pass(server);
  for (ParamGroup* group : server.groups()) {
    pass(*group);
    for (Param* param : group->fileParams) pass(*param);
  }
}

}  // namespace agent
