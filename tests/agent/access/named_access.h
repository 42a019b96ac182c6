// The agent's commands by name, on the real module and a state directory.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <stdexcept>
#include <string>

#include "agent/access/get_command.h"
#include "agent/access/saved_settings.h"
#include "agent/access/set_command.h"
#include "agent/bridge/authorisation.h"
#include "agent/bridge/change_tracker.h"
#include "agent/bridge/command_service.h"
#include "bridge/named_values.h"
#include "editing/record_check.h"
#include "tests/agent/state/kept_settings.h"
#include "tests/agent/state/scratch_directory.h"

namespace agent_testing {

using bridge::Change;
using bridge::NamedChanges;
using bridge::NamedValue;
using bridge::NamedValues;
using Steps = std::vector<Change>;

class NamedAccess : public testing::Test {
 protected:
  bridge::Reply getReply(const bridge::Names& names) { return getReply(root_, names); }
  bridge::Reply getReply(BridgeSession& session, const bridge::Names& names) {
    return get_.execute(session, bridge::encode(names));
  }

  static NamedValues valuesIn(const bridge::Reply& reply) {
    const auto values = bridge::decodeNamedValues(reply.output);
    if (reply.result != 1 || !values) throw std::runtime_error("no values: " + reply.text);
    return *values;
  }
  NamedValues get(const bridge::Names& names) { return valuesIn(getReply(names)); }

  /// The running value of one parameter.
  std::string running(const std::string& name) {
    return get({name}).values.at(0).running.value_or("(none)");
  }

  bridge::Reply setReply(const NamedChanges& changes) { return setReply(root_, changes); }
  bridge::Reply setReply(BridgeSession& session, const NamedChanges& changes) {
    return set_.execute(session, bridge::encode(changes));
  }
  bridge::Reply tryReply(BridgeSession& session, const NamedChanges& changes) {
    return set_.tryOut(session, bridge::encode(changes));
  }
  NamedValues set(const Steps& steps) { return valuesIn(setReply({{}, steps})); }

  /// Why the steps are refused. Nothing has changed then.
  std::string refusalOf(const Steps& steps) {
    const NamedValues before = get({});
    const bridge::Reply reply = setReply({{}, steps});
    EXPECT_EQ(reply.result, 0);
    EXPECT_EQ(reply.reason, bridge::Reason::IllegalValue);
    EXPECT_EQ(get({}), before);
    return reply.text;
  }

  LPARAMS::Server::Server_t& server() { return kept_.server(); }
  void save() { EXPECT_EQ(kept_.keeper().save(false), ""); }

  const ScratchDirectory directory_;
  KeptSettings kept_{directory_};
  const agent::AccessRules rules_{*server().ADMIN, "no-such-group"};
  const editing::RecordCheck check_{server(), 3};
  agent::ChangeTracker changes_{server()};
  agent::CommandService service_{server(), kept_.keeper().writeTurn(), changes_, &check_,
                                 [](bool) { return ""; }};
  agent::SavedSettings saved_{kept_.keeper()};
  const agent::GetCommand get_{server(), saved_, service_};
  const agent::SetCommand set_{server(), check_, saved_, service_};
  BridgeSession root_{0, 0, 1, {}};
  BridgeSession stranger_{::geteuid() + 4321, 65534, 99, {}};
};

}  // namespace agent_testing
