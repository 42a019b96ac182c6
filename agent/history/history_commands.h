// The agent's commands around the history: "save", "history" and "revision".
#pragma once

#include <string>

#include "agent/base/bridge_session.h"
#include "agent/base/mutex.h"
#include "agent/history/history.h"
#include "bridge/protocol.h"

namespace agent {

/// Thread-safe.
class HistoryCommands {
 public:
  /// REQUIRES: the history outlives the commands.
  explicit HistoryCommands(const History& history) : history_(history) {}

  /// Saves with a message, and answers with the number of the revision that this has made.
  static bridge::Reply save(BridgeSession& session, const std::string& input);

  /// Answers with the revisions, newest first, as many as fit a reply.
  bridge::Reply list(BridgeSession& session, const std::string& input);

  /// Answers with all values that a revision has.
  bridge::Reply read(BridgeSession& session, const std::string& input);

 private:
  Mutex reading_;  // held while files are read: there are never many of them in memory
  const History& history_ GUARDED_BY(reading_);
};

}  // namespace agent
