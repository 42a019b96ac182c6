#include "lparams/factory.h"

#include "lparams/interface/access_levels.h"
#include "lparams/interface/commands.h"
#include "lparams/module_objects.h"

namespace LPARAMS::Server {
namespace {

constexpr const char* SAVE_HOOK_SECTION = "LPARAMS_MODULE";

enum ObserverEvent : int { CHANGE_DONE = 0, CHANGE_BEGINS = 1 };

/// Only groups have observers, and an agent may have appended a plain parameter to the root. By
/// index: an observer may add another one.
void callObservers(const Param& member, ObserverEvent event) {
  const auto* group = dynamic_cast<const ParamGroup*>(&member);
  if (group == nullptr) return;
  // NOLINTNEXTLINE(modernize-loop-convert)
  for (size_t i = 0; i < group->observers.size(); ++i) group->observers[i](event);
}

}  // namespace

Factory::Factory() : CommandListener(LPARAMS_MODULE_ID) { AddCommandListener(this); }

Factory::~Factory() { DelCommandListener(this); }

int Factory::ExecCommand(BridgeSession& session, long cmd, const std::string& in,
                         std::string& out) {
  CommandStreamIn stream(in);
  switch (cmd) {
    case WRITE_GROUP:
      return _BridgeServerSide_AuthSession(session, moduleId, WRITE_ACCESS) ? writeGroup(stream)
                                                                            : 0;
    case READ_GROUP:
      return readGroup(stream, out);
    case SAVE:
      return _BridgeServerSide_AuthSession(session, moduleId, SAVE_ACCESS) ? save() : 0;
    default:
      return 0;
  }
}

int Factory::writeGroup(CommandStreamIn& in) {
  std::string name;
  take(in, name);
  basekit::ObjectLevelLockable::Lock lock(g_ioLock);
  Param* group = server.getParam(name);
  if (group == nullptr) return 0;
  callObservers(*group, CHANGE_BEGINS);
  // Kept oddity, for observers: a write that fails never tells them that it is over.
  if (!group->read(in)) return 0;
  callObservers(*group, CHANGE_DONE);
  return 1;
}

int Factory::readGroup(CommandStreamIn& in, std::string& out) {
  std::string name;
  take(in, name);
  basekit::ObjectLevelLockable::Lock lock(g_ioLock);
  Param* group = server.getParam(name);
  if (group == nullptr) return 0;
  CommandStreamOut stream{out};
  return group->write(stream) ? 1 : 0;
}

int Factory::save() {
  // No lock here: the hook is called under none, and Server_t::save takes its own.
  if (server.saveHook != nullptr) return server.saveHook(SAVE_HOOK_SECTION);
  std::string error;
  return server.save(&error) ? 1 : 0;
}

}  // namespace LPARAMS::Server
