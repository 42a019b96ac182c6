#include "agent/access/get_command.h"

#include <optional>
#include <utility>

#include "bridge/named_values.h"
#include "editing/named_reader.h"

namespace agent {
namespace {

using namespace LPARAMS::Server;
using bridge::Reason;
using bridge::Reply;

}  // namespace

Reply GetCommand::execute(BridgeSession& session, const std::string& input) const {
  const auto names = bridge::decodeNames(input);
  if (!names) return {0, Reason::MalformedInput, "the names cannot be read to their end"};
  const bool seesSecrets = CommandService::mayWrite(session);
  auto saved = saved_.current();

  const MutexLock turn(service_.writeTurn());
  editing::NamedReader reader(settings_, std::move(saved), seesSecrets);
  bridge::NamedValues values{.values = reader.read(*names)};
  for (const ParamGroup* group : settings_.groups()) {
    values.revisions.push_back({group->name, service_.changes().revision(group->name)});
  }
  if (!reader.mistakes().empty()) return {0, Reason::IllegalValue, reader.mistakes().text()};
  if (reader.isTooLarge()) {
    return {0, Reason::ReplyTooLarge, "the values do not fit a frame; ask for fewer at once"};
  }
  return {1, Reason::None, {}, bridge::encode(values)};
}

}  // namespace agent
