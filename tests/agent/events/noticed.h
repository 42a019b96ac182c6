// What a notice tells of a write, in words.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "agent/events/group_values.h"
#include "agent/events/notices.h"
#include "lparams/catalogue/catalogue.h"

namespace agent_testing {

/// A notice of what the action changes in the group.
inline bridge::Notice noticeAfter(LPARAMS::Server::ParamGroup& group,
                                  const std::function<void()>& action) {
  const agent::GroupValues before(group);
  action();
  const agent::GroupValues after(group);
  bridge::Notice notice;
  agent::ChangeTeller teller(notice);
  before.visitChangesUntil(after, [&](const agent::GroupChange& change) { teller.add(change); });
  return notice;
}

/// "1 IKE.IKE_PORT: 500 -> 501", one for each change; what is missing is "-".
inline std::vector<std::string> changesIn(const bridge::Notice& notice) {
  std::vector<std::string> lines;
  for (const auto& [kind, value] : notice.changes) {
    lines.push_back(std::to_string(kind) + " " + value.name + ": " + value.before.value_or("-") +
                    " -> " + value.running.value_or("-") + (value.secret ? " secret" : ""));
  }
  return lines;
}

}  // namespace agent_testing
