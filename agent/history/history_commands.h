// The agent's commands around the history: "save", "history" and "revision".
#pragma once

#include <string>

#include "agent/base/bridge_session.h"
#include "agent/base/mutex.h"
#include "agent/bridge/command_service.h"
#include "agent/history/history.h"
#include "bridge/protocol.h"

namespace agent {

/// Thread-safe.
class HistoryCommands {
 public:
  /// REQUIRES: both outlive the commands.
  HistoryCommands(const History& history, CommandService& service)
      : history_(history), service_(service) {}

  /// Saves with a message, and answers with the number of the revision that this has made.
  bridge::Reply save(BridgeSession& session, const std::string& input) const;

  /// Answers with the revisions, newest first, as many as fit a reply.
  bridge::Reply list(BridgeSession& session, const std::string& input);

  /// Answers with all values that a revision has.
  bridge::Reply read(BridgeSession& session, const std::string& input);

 private:
  const History& history_;
  CommandService& service_;
  Mutex reading_;  // held while files are read: there are never many of them in memory
};

}  // namespace agent
