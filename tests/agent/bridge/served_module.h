// The real module behind everything that the bridge puts in front of it but the socket.
#pragma once

#include <unistd.h>

#include <optional>
#include <string>

#include "agent/base/bridge_session.h"
#include "agent/bridge/authorisation.h"
#include "agent/bridge/change_tracker.h"
#include "agent/bridge/command_service.h"
#include "agent/module.h"
#include "bridge/protocol.h"
#include "editing/record_check.h"
#include "tests/support/records.h"

namespace agent_testing {

/// A user who is neither root nor the one that runs the tests.
inline uid_t strangersUid() { return ::geteuid() + 4321; }

/// One exists at a time. The settings are at their defaults; nothing is loaded.
class ServedModule {
 public:
  struct Rules {
    bool acceptAny = false;
    std::string adminGroup = {};
    size_t maxUsers = 3;
  };
  ServedModule() : ServedModule(Rules{}) {}
  explicit ServedModule(const Rules& rules)
      : rules_(*server().ADMIN, rules.adminGroup),
        check_(server(), rules.maxUsers),
        changes_(server(), 1),
        service_(server(), writeTurn_, changes_, rules.acceptAny ? nullptr : &check_,
                 [](bool) { return "{}"; }) {}

  LPARAMS::Server::Server_t& server() { return module_.server(); }
  const agent::AccessRules& rules() const { return rules_; }
  const editing::RecordCheck& check() const { return check_; }
  agent::ChangeTracker& changes() { return changes_; }
  agent::CommandService& service() { return service_; }
  agent::WriteTurn& writeTurn() { return writeTurn_; }

  bridge::Reply read(const std::string& group) { return read(root_, group); }
  bridge::Reply read(BridgeSession& session, const std::string& group) {
    return service_.execute(
        session, {13, 1, testing_support::encodeName(testing_support::Settings().group(group))});
  }

  bridge::Reply write(const std::string& input, std::optional<uint64_t> revision = {}) {
    return write(root_, input, revision);
  }
  bridge::Reply write(BridgeSession& session, const std::string& input,
                      std::optional<uint64_t> revision = {}) {
    return service_.execute(session, {13, 0, input, revision});
  }

 private:
  agent::Module module_{PRODUCTS_DIR "/lparams_server.so"};
  agent::AccessRules rules_;
  editing::RecordCheck check_;
  agent::ChangeTracker changes_;
  agent::WriteTurn writeTurn_;
  agent::CommandService service_;
  BridgeSession root_{0, 0, 1234, {}};
};

/// The input of a write of ADMIN with this SESSION_EXPTIME.
inline std::string adminRecord(unsigned seconds) {
  testing_support::Settings settings;
  settings.adminGroup.SESSION_EXPTIME.value = seconds;
  return testing_support::encodeRecord(settings.adminGroup);
}

/// SESSION_EXPTIME in the output of a read of ADMIN.
inline unsigned exptimeIn(const bridge::Reply& reply) {
  testing_support::Settings settings;
  testing_support::decodeRecord(settings.adminGroup, reply.output);
  return settings.adminGroup.SESSION_EXPTIME.value;
}

}  // namespace agent_testing
