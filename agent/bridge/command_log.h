// What the log tells of the commands of clients: each write, each save, each refusal in one line,
// with the user, the process and its program, and never with a secret's value.
#pragma once

#include <string>
#include <string_view>

#include "agent/base/bridge_session.h"
#include "bridge/protocol.h"

namespace agent {

/// A write that has, or may have, changed values: those of `changes`, GroupValues::changesUntil().
void logWrite(const BridgeSession& session, std::string_view group, const std::string& changes,
              const bridge::Reply& reply);

/// A save that was carried out.
void logSave(const BridgeSession& session, bool force);

/// A reply that says no. Clients can cause as many as they like: told once a second, with the
/// number of those left out.
void logRefusal(const BridgeSession& session, const bridge::Reply& reply);

}  // namespace agent
