#include "agent/access/group_writer.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "editing/copy_group.h"

namespace agent {
namespace {

using namespace LPARAMS::Server;
using bridge::Reply;

ParamGroup& counterpart(const Catalogue& catalogue, const ParamGroup& group) {
  const auto groups = catalogue.groups();
  return **std::ranges::find_if(
      groups, [&](const ParamGroup* one) { return std::string_view(one->name) == group.name; });
}

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
    ParamGroup& before = counterpart(former, *group);
    editing::copyGroup(counterpart(settings_, *group), before);
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
  ParamGroup& group = counterpart(settings_, values);
  return service_.write(session, inputOf(values), [&] {
    const basekit::ObjectLevelLockable::Lock lock(group);
    editing::copyFileOnly(values, group);
  });
}

}  // namespace agent
