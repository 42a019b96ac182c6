#include "tests/client/verbs/client_test.h"

namespace system_testing {
namespace {

TEST_F(Client, DescribeTellsWhatIsKnown) {
  EXPECT_EQ(out({"describe", "EXCHANGE_TIMEOUT"}),
            "IKE.EXCHANGE_TIMEOUT\n"
            "  kind:    number\n"
            "  meaning: exchange time-out\n"
            "  value:   90\n"
            "  saved:   90\n"
            "  default: 60\n"
            "  legal:   5 to 600\n"
            "  kept in: the settings file\n");
  EXPECT_THAT(out({"describe", "DPD_IDLE_TIME"}), HasSubstr("not in records of the bridge"));
  EXPECT_THAT(out({"describe", "NATT_POLICY"}),
              HasSubstr("  legal:   NATT_POLICY_DISABLED (0)\n           NATT_POLICY_STD (1)\n"));
  EXPECT_THAT(out({"describe", "USERS[alice].PMP_TIMEOUT"}), HasSubstr("  value:   20\n"));
  const std::string both = out({"describe", "PMP_TIMEOUT"});
  EXPECT_THAT(both, HasSubstr("POLICY.PMP_TIMEOUT\n"));
  EXPECT_THAT(both, HasSubstr("USERS.PMP_TIMEOUT\n"));
  EXPECT_THAT(out({"describe", "IKE1_FRAGM_ENABLED"}), HasSubstr("  kind:    flag\n"));
  EXPECT_THAT(out({"describe", "QCD_SECRET"}), HasSubstr("  kind:    secret\n"));
  EXPECT_THAT(out({"describe", "UPDATE.SCHEDULE"}), HasSubstr("  kind:    text\n"));
  EXPECT_EQ(json::parse(out({"describe", "IKE.IKE_PORT", "--json"}))["IKE.IKE_PORT"]["max"], 65535);
  EXPECT_EQ(ctl({"describe", "NAT_POLICY"}),
            failed(65, "\"NAT_POLICY\" is no group and no parameter; did you mean NATT_POLICY?"));
  EXPECT_EQ(ctl({"describe", "USERS[alice]"}),
            failed(65, "\"USERS[alice]\" is no group and no parameter"));
  EXPECT_THAT(ctl({"describe", "USERS[nobody].NAME"}).err, HasSubstr("no such user"));
}

TEST_F(Client, DescribeNeedsNoAgent) {
  const Outcome outcome =
      client_testing::runClient({"--socket", "/nonexistent", "describe", "IKE.IKE_PORT"});
  EXPECT_EQ(outcome, printed("IKE.IKE_PORT\n"
                             "  kind:    number\n"
                             "  meaning: IKE port number\n"
                             "  default: 500\n"
                             "  legal:   1 to 65535\n"
                             "  kept in: the settings file\n"));
}

}  // namespace
}  // namespace system_testing
