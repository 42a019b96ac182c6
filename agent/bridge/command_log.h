// What the log tells of the commands of clients: each write, each save, each refusal in one line,
// with the user, the process and its program, and never with a secret's value.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "agent/base/bridge_session.h"
#include "agent/events/group_values.h"
#include "bridge/protocol.h"

namespace agent {

/// The names of what a write has changed, with commas between them, and never a value:
/// "PMP_TIMEOUT", and of users "[anna].PMP_TIMEOUT", "[bert] added", "[carl] removed", "order". Of
/// many only the first are named, and how many more there are. "none" if there are none.
class ChangedNames {
 public:
  void add(const GroupChange& change);
  std::string text() const;

 private:
  std::string names_;
  size_t count_ = 0;
};

/// A write that has, or may have, changed values: those of `changes`.
void logWrite(const BridgeSession& session, std::string_view group, std::string_view changes,
              const bridge::Reply& reply);

/// A save that was carried out.
void logSave(const BridgeSession& session, bool force);

/// A reply that says no. Clients can cause as many as they like: told once a second, with the
/// number of those left out. False if this one is.
bool logRefusal(const BridgeSession& session, const bridge::Reply& reply);

}  // namespace agent
