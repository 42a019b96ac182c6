// What is told to those who watch, made of what the agent knows.
#pragma once

#include <cstddef>
#include <string>

#include "agent/base/bridge_session.h"
#include "agent/events/group_values.h"
#include "bridge/notice.h"

namespace agent {

/// A notice of what the session's client has done, now.
bridge::Notice noticeOf(bridge::Notice::What what, const BridgeSession& session);

/// A notice of what the agent does by itself, now.
bridge::Notice noticeOfAgent(bridge::Notice::What what);

/// The text as a notice holds it: cut off if it is too long.
std::string noticedText(const std::string& text);

/// Adds changes to a notice as long as there is room, and counts the others. Secrets have no
/// values.
class ChangeTeller {
 public:
  explicit ChangeTeller(bridge::Notice& notice) : notice_(notice) {}

  void add(const GroupChange& change);

 private:
  bridge::Notice& notice_;
  size_t size_ = 0;  // bytes of the changes
};

}  // namespace agent
