#include "agent/service_status.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace agent {
namespace {

using testing::HasSubstr;
using testing::Not;

std::string statusWith(std::string degraded, std::string disk = {}, std::string failure = {}) {
  SettingsKeeper::State state;
  state.degradedReason = std::move(degraded);
  state.disk = std::move(disk);
  state.lastFailure = std::move(failure);
  return serviceStatus("/run/agent.sock", state);
}

TEST(ServiceStatusTest, TellsTheSocketAndTheWorstThatIsWrong) {
  EXPECT_EQ(statusWith(""), "listening on /run/agent.sock");
  EXPECT_EQ(
      statusWith("cut off", "full"),
      "listening on /run/agent.sock; degraded, saves are refused until one is forced: cut off");
  EXPECT_EQ(
      statusWith("", "full", "refused"),
      "listening on /run/agent.sock; the settings are not durable until they are saved: full");
  EXPECT_EQ(statusWith("", "", "refused"),
            "listening on /run/agent.sock; the last save failed: refused");
}

TEST(ServiceStatusTest, IsOneLine) {
  // A second one would be a message of its own.
  EXPECT_THAT(statusWith("a name\nSTOPPING=1"), HasSubstr("a name\\x0aSTOPPING=1"));
  EXPECT_THAT(statusWith("a name\nSTOPPING=1"), Not(HasSubstr("\n")));
}

}  // namespace
}  // namespace agent
