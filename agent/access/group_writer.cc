#include "agent/access/group_writer.h"

#include <string>

#include "editing/copy_group.h"

namespace agent {
namespace {

using namespace LPARAMS::Server;
using bridge::Reply;

/// The input of the module's write command.
std::string inputOf(ParamGroup& group) {
  std::string input;
  CommandStreamOut out{input};
  put(out, std::string(group.name));
  (void)group.write(out);
  return input;
}

}  // namespace

Reply GroupWriter::write(BridgeSession& session, const std::vector<ParamGroup*>& groups) const {
  Catalogue former;
  std::vector<ParamGroup*> written;  // of `former`
  for (ParamGroup* group : groups) {
    ParamGroup& before = editing::counterpart(former, *group);
    editing::copyGroup(editing::counterpart(settings_, *group), before);
    written.push_back(&before);
    Reply reply = writeGroup(session, *group);
    if (reply.result != 0) continue;
    reply.text = std::string("writing ") + group->name + " failed: " + reply.text;
    for (ParamGroup* undone : written) {
      if (writeGroup(session, *undone).result == 0) {
        reply.text += std::string("; ") + undone->name + " could not be put back";
      }
    }
    return reply;
  }
  return {.result = 1};
}

/// Gives the settings the values of this group. The module tells its observers.
Reply GroupWriter::writeGroup(BridgeSession& session, ParamGroup& values) const {
  ParamGroup& group = editing::counterpart(settings_, values);
  return service_.write(session, inputOf(values), [&] {
    const basekit::ObjectLevelLockable::Lock lock(group);
    editing::copyFileOnly(values, group);
  });
}

}  // namespace agent
