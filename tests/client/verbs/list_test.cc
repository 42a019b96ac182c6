#include "tests/client/verbs/client_test.h"

namespace system_testing {
namespace {

TEST_F(Client, ListIsATableOfWhatTheGlobMatches) {
  EXPECT_EQ(out({"list", "*timeout*"}),
            "NAME                        VALUE  DEFAULT  SAVED  LEGAL\n"
            "IKE.EXCHANGE_TIMEOUT        90     60       90     5 to 600\n"
            "IKE.SHORT_EXCHANGE_TIMEOUT  5      5        5      3 to 60\n"
            "POLICY.PMP_TIMEOUT          30     10       30     5 to 4294967295\n"
            "USERS[alice].PMP_TIMEOUT    20     10       20     5 to 4294967295\n"
            "USERS[bob].PMP_TIMEOUT      10     10       10     5 to 4294967295\n");
  EXPECT_EQ(out({"list", "IKE.?KE_PORT"}),
            "NAME          VALUE  DEFAULT  SAVED  LEGAL\n"
            "IKE.IKE_PORT  500    500      500    1 to 65535\n");
  EXPECT_EQ(out({"list", "ike_port"}), out({"list", "IKE.IKE_PORT"}));
  EXPECT_THAT(out({"list", "USERS[bob]"}), Not(HasSubstr("alice")));
  EXPECT_EQ(out({"list", "nothing*"}), "");
}

TEST_F(Client, ListFiltersByWhatIsChangedUnsavedOrInTheFileOnly) {
  EXPECT_EQ(out({"list", "--unsaved"}), "");
  (void)out({"set", "LOG.WALL_ON=1", "UPDATE.SCHEDULE=two words"});
  EXPECT_EQ(out({"list", "--unsaved"}),
            "NAME             VALUE        DEFAULT  SAVED        LEGAL\n"
            "LOG.WALL_ON      1            1        0            0 or 1\n"
            "UPDATE.SCHEDULE  \"two words\"  \"\"       \"0 3 * * 6\"  one line of text\n");
  EXPECT_EQ(out({"list", "--unsaved", "--changed", "LOG"}), "");
  EXPECT_THAT(out({"list", "--file-only"}), HasSubstr("IKE.DPD_IDLE_TIME"));
  EXPECT_THAT(out({"list", "--file-only"}), Not(HasSubstr("IKE.IKE_PORT")));
}

TEST_F(Client, ListHidesSecretsAndAsJsonHasTypedValues) {
  setLines({"IKE.QCD_SECRET=s3cret"});
  EXPECT_THAT(out({"list"}), Not(HasSubstr("s3cret")));
  const json document = json::parse(out({"list", "--json"}));
  EXPECT_EQ(document["IKE"]["IKE_PORT"], 500);
  EXPECT_EQ(document["IKE"]["DPD_IDLE_TIME"], 45);
  EXPECT_EQ(document["LOG"]["WALL_ON"], false);
  EXPECT_EQ(document["LOG"]["LOG_LEVEL"], "_LL_DETAILS");
  EXPECT_EQ(document["IKE"]["QCD_SECRET"], "s3cret");
  EXPECT_EQ(document["USERS"]["bob"]["PMP_TIMEOUT"], 10);
  EXPECT_EQ(document["USERS"].size(), 2U);
}

}  // namespace
}  // namespace system_testing
