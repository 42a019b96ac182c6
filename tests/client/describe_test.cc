// What the client says of parameters by itself.
#include "client/describe.h"

#include <gmock/gmock.h>

#include <sstream>

#include "tests/client/client_process.h"

namespace client_testing {
namespace {

using testing::HasSubstr;
using testing::Not;

std::string described(const std::string& name) {
  std::ostringstream out;
  client::describe(out, name);
  return out.str();
}

TEST(Describe, AParameterByItsFullName) {
  EXPECT_EQ(described("IKE.EXCHANGE_TIMEOUT"),
            "IKE.EXCHANGE_TIMEOUT\n"
            "  meaning: exchange time-out\n"
            "  legal:   a whole number from 5 to 600\n"
            "  default: 60\n"
            "  kept in: the agent and its settings file\n");
  EXPECT_EQ(described("IKE.DPD_IDLE_TIME"),
            "IKE.DPD_IDLE_TIME\n"
            "  meaning: idle time for dead-peer detection\n"
            "  legal:   a whole number from 0 to 600\n"
            "  default: 30\n"
            "  kept in: the settings file only\n");
}

TEST(Describe, EveryParameterThatHasTheName) {
  const std::string text = described("PMP_TIMEOUT");
  EXPECT_THAT(text, HasSubstr("POLICY.PMP_TIMEOUT\n"));
  EXPECT_THAT(text, HasSubstr("USERS.PMP_TIMEOUT\n"));
}

TEST(Describe, AWholeGroup) {
  const std::string text = described("USERS");
  EXPECT_THAT(text, HasSubstr("USERS.NAME\n"));
  EXPECT_THAT(text, HasSubstr("USERS.PMP_PSK_NAME\n"));
  EXPECT_THAT(text, Not(HasSubstr("POLICY.")));
}

TEST(Describe, NeedsNoAgentAndTellsWhatThereIsNot) {
  const Outcome known = runClient({"--socket", "/nonexistent", "describe", "LOG.LOG_LEVEL"});
  EXPECT_EQ(known, printed(described("LOG.LOG_LEVEL")));
  EXPECT_EQ(runClient({"describe", "ike.ike_port\n"}),
            failed(2, "\"ike.ike_port\\x0a\" is no group and no parameter; see lparamsctl show"));
}

}  // namespace
}  // namespace client_testing
