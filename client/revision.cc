#include "client/revision.h"

#include <algorithm>
#include <utility>

#include "bridge/bytes.h"
#include "client/catalogue_view.h"
#include "client/failure.h"
#include "text/escape.h"

namespace client {

using bridge::NamedValue;
using bridge::NamedValues;

std::vector<bridge::Revision> historyOf(AgentStore& agent, std::string& leftOut) {
  bridge::Reply reply = agent.call(bridge::AgentCommand{"history", {}}, "reading the history");
  auto revisions = bridge::decodeRevisions(reply.output);
  if (!revisions) throw Failure(programs::EXIT_UNAVAILABLE, "the agent's history cannot be read");
  leftOut = std::move(reply.text);
  return std::move(*revisions);
}

NamedValues revisionOf(AgentStore& agent, uint64_t number) {
  std::string input;
  bridge::put(input, number);
  return valuesIn(agent.call(bridge::AgentCommand{"revision", input},
                             "reading revision " + std::to_string(number)));
}

Wanted wantedOf(const NamedValues& revision, const NamedValues& now) {
  Wanted wanted{.exclusive = true, .exactOrder = true};
  for (const NamedValue& value : revision.values) {
    const NamePieces pieces = takeApart(value.name);
    if (!value.running) continue;
    if (!value.name.starts_with("USERS[") || pieces.member != "NAME") {
      wanted.values.emplace_back(value.name, *value.running);
      continue;
    }
    wanted.users.push_back(pieces.user);
    if (*value.running == pieces.user) continue;
    // It goes by its index: the same one has to be there.
    const bool isThere = std::ranges::any_of(now.values, [&](const NamedValue& other) {
      return other.name == value.name && other.running == value.running;
    });
    if (isThere) continue;
    throw Failure(programs::EXIT_ILLEGAL,
                  text::escaped(value.name) + ": that revision has several users called " +
                      text::inQuotes(*value.running) + ", who cannot be made again");
  }
  return wanted;
}

}  // namespace client
