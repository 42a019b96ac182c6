#include "agent/bridge/authorisation.h"

#include <gmock/gmock.h>
#include <grp.h>

#include "platform/command_bridge.h"
#include "tests/agent/bridge/served_module.h"
#include "tests/support/waits_for.h"

namespace agent {
namespace {

using agent_testing::strangersUid;

const std::string GROUP = "daemon";  // exists on every system

gid_t groupNumber() { return AccessRules::numberOf(GROUP).value(); }

bool isAllowed(BridgeSession session, long level) {
  return _BridgeServerSide_AuthSession(session, LPARAMS_MODULE_ID, level);
}

TEST(Authorisation, NumbersOfGroups) {
  EXPECT_EQ(AccessRules::numberOf("root"), 0u);
  EXPECT_EQ(groupNumber(), ::getgrnam(GROUP.c_str())->gr_gid);
  EXPECT_EQ(AccessRules::numberOf("no such group"), std::nullopt);
  EXPECT_EQ(AccessRules::numberOf(""), std::nullopt);
}

TEST(Authorisation, ANameThatNoGroupCanHaveIsNotAskedFor) {
  for (const size_t size : {257, 64 * 1024, 16 * 1024 * 1024}) {
    EXPECT_EQ(AccessRules::numberOf(std::string(size, 'x')), std::nullopt);
  }
}

TEST(Authorisation, WhoMayDoWhat) {
  const agent_testing::ServedModule module({.adminGroup = GROUP});
  const gid_t admins = groupNumber();
  const gid_t other = admins + 1000;
  const struct {
    const char* who;
    BridgeSession session;
    bool levels[5];  // 0 to 4
  } rows[] = {
      {"root", {0, other, 1, {}}, {true, true, true, true, true}},
      {"the agent's user", {::geteuid(), other, 1, {}}, {true, true, true, true, true}},
      {"by its first group", {strangersUid(), admins, 1, {}}, {true, false, true, false, false}},
      {"by another group",
       {strangersUid(), other, 1, {7, admins, 9}},
       {true, false, true, false, false}},
      {"in other groups", {strangersUid(), other, 1, {7, 9}}, {false, false, false, false, false}},
      {"in no group", {strangersUid(), other, 1, {}}, {false, false, false, false, false}},
      {"group of root, not root", {strangersUid(), 0, 1, {0}}, {false, false, false, false, false}},
  };
  for (const auto& row : rows) {
    for (long level = 0; level < 5; ++level) {
      EXPECT_EQ(isAllowed(row.session, level), row.levels[level]) << row.who << level;
    }
    EXPECT_FALSE(isAllowed({strangersUid(), admins, 1, {}}, -1));
  }
}

TEST(Authorisation, TheSettingsNameTheGroup) {
  agent_testing::ServedModule module;
  const BridgeSession member(strangersUid(), groupNumber(), 1, {});
  EXPECT_FALSE(isAllowed(member, 0));
  module.server().ADMIN->ADMIN_GROUP.value = GROUP;
  EXPECT_TRUE(isAllowed(member, 0));
  module.server().ADMIN->ADMIN_GROUP.value = "no such group";
  EXPECT_FALSE(isAllowed(member, 0));
  module.server().ADMIN->ADMIN_GROUP.value = "";
  EXPECT_FALSE(isAllowed(member, 0));
}

TEST(Authorisation, TheGroupsNameIsLookedAtUnderItsLock) {
  agent_testing::ServedModule module;
  EXPECT_TRUE(testing_support::waitsFor(module.server().ADMIN->ADMIN_GROUP,
                                        [&] { (void)module.rules().adminGroup(); }));
}

TEST(Authorisation, TheCommandLineOutranksTheSettings) {
  agent_testing::ServedModule module({.adminGroup = "no such group"});
  module.server().ADMIN->ADMIN_GROUP.value = GROUP;
  EXPECT_FALSE(isAllowed({strangersUid(), groupNumber(), 1, {}}, 0));
}

TEST(Authorisation, TheRefusalSaysWhoMay) {
  const agent_testing::ServedModule module({.adminGroup = GROUP});
  BridgeSession session(strangersUid(), 65534, 1, {});
  EXPECT_FALSE(_BridgeServerSide_AuthSession(session, LPARAMS_MODULE_ID, 2));
  EXPECT_EQ(session.command.refusal,
            "user " + std::to_string(strangersUid()) +
                " may not use module 13 at level 2; the agent's user, root and "
                "the members of the group \"daemon\" may");
}

TEST(Authorisation, WithoutRulesOnlyTheAgentsUserAndRootAreIn) {
  EXPECT_TRUE(isAllowed({0, 0, 1, {}}, 0));
  EXPECT_FALSE(isAllowed({strangersUid(), groupNumber(), 1, {}}, 0));
}

}  // namespace
}  // namespace agent
