// Eight clients at once, for a moment; by hand, for as long as you like (bridge_stress).
#include "tests/system/safety/agent_test.h"

namespace safety {
namespace {

using Stress = AgentTest;

TEST_F(Stress, NoUpdateIsLost) {
  start();
  const Outcome outcome = run({STRESS_PROGRAM, "3", socket_});
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_THAT(outcome.output, testing::EndsWith("\n0 lost updates\n"));
  save();
  const std::string exptime = get("ADMIN.SESSION_EXPTIME");
  const std::string name = get("USERS[0].NAME");
  EXPECT_EQ(stop(), 0);
  start();
  EXPECT_EQ(get("ADMIN.SESSION_EXPTIME"), exptime);
  EXPECT_EQ(get("USERS[0].NAME"), name);
}

}  // namespace
}  // namespace safety
