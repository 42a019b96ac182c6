#include "agent/access/set_command.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "bridge/named_values.h"
#include "editing/draft.h"

namespace agent {
namespace {

using namespace LPARAMS::Server;
using bridge::Reason;
using bridge::Reply;

constexpr const char* USERS_GROUP = "USERS";

editing::Draft::Users usersIn(const std::vector<bridge::Change>& changes) {
  const auto namesUser = [](const bridge::Change& change) {
    return change.kind != bridge::Change::Set || change.name.starts_with(USERS_GROUP);
  };
  return std::ranges::any_of(changes, namesUser) ? editing::Draft::WithUsers
                                                 : editing::Draft::WithoutUsers;
}

}  // namespace

Reply SetCommand::carryOut(BridgeSession& session, const std::string& input, Extent extent) const {
  const auto request = bridge::decodeNamedChanges(input);
  if (request) return carryOut(session, *request, extent);
  // A stranger learns nothing.
  if (!CommandService::mayWrite(session)) {
    return {0, Reason::NotAuthorised, session.command.refusal};
  }
  return {0, Reason::MalformedInput, "the changes cannot be read to their end"};
}

Reply SetCommand::carryOut(BridgeSession& session, const bridge::NamedChanges& request,
                           Extent extent) const {
  if (!CommandService::mayWrite(session)) {
    return {0, Reason::NotAuthorised, session.command.refusal};
  }
  auto saved = saved_.current();

  const MutexLock turn(service_.writeTurn());
  for (const auto& [group, revision] : request.revisions) {
    if (auto conflict = service_.conflictOf(group, revision)) return std::move(*conflict);
  }
  editing::Draft draft(settings_, check_, usersIn(request.changes));
  for (const bridge::Change& change : request.changes) draft.apply(change);
  draft.finish();
  if (!draft.mistakes().empty()) return {0, Reason::IllegalValue, draft.mistakes().text()};

  if (extent == Written) {
    Reply reply = writer_.write(session, draft.changedGroups());
    if (reply.result == 0) return reply;
  }
  bridge::NamedValues done{.values = draft.changedValues(std::move(saved))};
  for (const ParamGroup* group : draft.changedGroups()) {
    done.revisions.push_back({group->name, service_.changes().revision(group->name)});
  }
  return {1, Reason::None, {}, bridge::encode(done)};
}

}  // namespace agent
