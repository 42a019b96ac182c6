#include <gtest/gtest.h>
#include <unistd.h>

#include "agent/bridge_session.h"
#include "platform/command_bridge.h"

namespace {

constexpr long LEVELS[] = {0, 1, 2};

TEST(Authorisation, IsGivenToRootAndToTheAgentsOwnUser) {
  for (const uid_t uid : {uid_t{0}, geteuid()}) {
    BridgeSession session(uid, 65534, 1);
    for (const long level : LEVELS) {
      EXPECT_TRUE(_BridgeServerSide_AuthSession(session, LPARAMS_MODULE_ID, level)) << uid;
      EXPECT_EQ(session.refusal, "") << uid;
    }
  }
}

TEST(Authorisation, IsRefusedToOthersWithTheReason) {
  BridgeSession session(geteuid() + 1, 0, 1);
  for (const long level : LEVELS) {
    EXPECT_FALSE(_BridgeServerSide_AuthSession(session, LPARAMS_MODULE_ID, level));
    EXPECT_EQ(session.refusal, "user " + std::to_string(geteuid() + 1) +
                                   " has no access at level " + std::to_string(level) +
                                   " to module 13; the agent's own user and root have it");
  }
}

}  // namespace
