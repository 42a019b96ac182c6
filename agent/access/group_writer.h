// Writes of whole groups, those of their values too that are in the file only.
#pragma once

#include <vector>

#include "agent/base/bridge_session.h"
#include "agent/bridge/command_service.h"
#include "bridge/protocol.h"
#include "lparams/catalogue/catalogue.h"

namespace agent {

/// Gives the settings the values of groups of another catalogue. The module writes each group with
/// its own command, right after what it has in the file only was set. Thread-safe.
class GroupWriter {
 public:
  /// REQUIRES: both outlive the writer.
  GroupWriter(LPARAMS::Server::Catalogue& settings, CommandService& service)
      : settings_(settings), service_(service) {}

  /// If a group is refused, those before it go back to what they were; the reply says what could
  /// not. REQUIRES: the values have been checked, the session may write, and the write turn is
  /// held.
  bridge::Reply write(BridgeSession& session,
                      const std::vector<LPARAMS::Server::ParamGroup*>& groups) const;

 private:
  bridge::Reply writeGroup(BridgeSession& session, LPARAMS::Server::ParamGroup& values) const;

  LPARAMS::Server::Catalogue& settings_;
  CommandService& service_;
};

}  // namespace agent
