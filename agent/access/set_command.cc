#include "agent/access/set_command.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "bridge/named_values.h"
#include "editing/copy_group.h"
#include "editing/draft.h"

namespace agent {
namespace {

using namespace LPARAMS::Server;
using bridge::Reason;
using bridge::Reply;

constexpr const char* USERS_GROUP = "USERS";

ParamGroup& counterpart(const Catalogue& catalogue, const ParamGroup& group) {
  const auto groups = catalogue.groups();
  return **std::ranges::find_if(
      groups, [&](const ParamGroup* one) { return std::string_view(one->name) == group.name; });
}

editing::Draft::Users usersIn(const std::vector<bridge::Change>& changes) {
  const auto namesUser = [](const bridge::Change& change) {
    return change.kind != bridge::Change::Set || change.name.starts_with(USERS_GROUP);
  };
  return std::ranges::any_of(changes, namesUser) ? editing::Draft::WithUsers
                                                 : editing::Draft::WithoutUsers;
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

Reply SetCommand::carryOut(BridgeSession& session, const std::string& input, Extent extent) const {
  if (!CommandService::mayWrite(session)) {
    return {0, Reason::NotAuthorised, session.command.refusal};
  }
  const auto request = bridge::decodeNamedChanges(input);
  if (!request) return {0, Reason::MalformedInput, "the changes cannot be read to their end"};
  auto saved = saved_.current();

  const MutexLock turn(service_.writeTurn());
  for (const auto& [group, revision] : request->revisions) {
    if (auto conflict = service_.conflictOf(group, revision)) return std::move(*conflict);
  }
  editing::Draft draft(settings_, check_, usersIn(request->changes));
  for (const bridge::Change& change : request->changes) draft.apply(change);
  draft.finish();
  if (!draft.mistakes().empty()) return {0, Reason::IllegalValue, draft.mistakes().text()};

  if (extent == Written) {
    Reply reply = writeAll(session, draft);
    if (reply.result == 0) return reply;
  }
  bridge::NamedValues done{.values = draft.changedValues(std::move(saved))};
  for (const ParamGroup* group : draft.changedGroups()) {
    done.revisions.push_back({group->name, service_.changes().revision(group->name)});
  }
  return {1, Reason::None, {}, bridge::encode(done)};
}

/// If a group is refused, those before it go back to what they were.
Reply SetCommand::writeAll(BridgeSession& session, editing::Draft& draft) const {
  Catalogue former;
  std::vector<ParamGroup*> written;  // of `former`
  for (ParamGroup* group : draft.changedGroups()) {
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
Reply SetCommand::writeGroup(BridgeSession& session, ParamGroup& values) const {
  ParamGroup& group = counterpart(settings_, values);
  return service_.write(session, inputOf(values), [&] {
    const basekit::ObjectLevelLockable::Lock lock(group);
    editing::copyFileOnly(values, group);
  });
}

}  // namespace agent
