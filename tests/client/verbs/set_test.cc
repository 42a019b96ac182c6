#include "tests/client/verbs/client_test.h"

namespace system_testing {
namespace {

TEST_F(Client, SetChangesGroupsTogetherAndTellsHow) {
  EXPECT_EQ(out({"set", "IKE.EXCHANGE_TIMEOUT=120", "USERS[bob].PMP_TIMEOUT=20",
                 "IKE.DPD_IDLE_TIME=50", "LOG.WALL_ON=false", "UPDATE.SCHEDULE="}),
            "IKE.EXCHANGE_TIMEOUT: 90 -> 120   (not saved)\n"
            "USERS[bob].PMP_TIMEOUT: 10 -> 20   (not saved)\n"
            "IKE.DPD_IDLE_TIME: 45 -> 50   (not saved)\n"
            "LOG.WALL_ON: 0 (unchanged)\n"
            "UPDATE.SCHEDULE: \"0 3 * * 6\" -> \"\"   (not saved)\n");
  EXPECT_EQ(out({"set", "IKE.EXCHANGE_TIMEOUT=90"}), "IKE.EXCHANGE_TIMEOUT: 120 -> 90\n");
  EXPECT_EQ(out({"set", "--save", "IKE.IKE_PORT=501"}), "IKE.IKE_PORT: 500 -> 501\n");
  EXPECT_THAT(host::readFile(settingsPath), HasSubstr("DPD_IDLE_TIME=50\n"));
  EXPECT_EQ(out({"set", "IKE.QCD_SECRET=other"}),
            "IKE.QCD_SECRET: (hidden) -> (hidden)   (not saved)\n");
}

TEST_F(Client, SetTellsAllMistakesAndWritesNothing) {
  EXPECT_EQ(ctl({"set", "IKE.EXCHANGE_TIMEOUT=120", "IKE.IKE_PROT=1", "IKE.NATT_PORT=0"}),
            failed(65,
                   "IKE.IKE_PROT: no such parameter; did you mean IKE.IKE_PORT?\n"
                   "IKE.NATT_PORT: \"0\" is not a whole number from 1 to 65535\n"
                   "nothing was written"));
  EXPECT_EQ(ctl({"set", "IKE.EXCHANGE_TIMEOUT=120", "IKE.IKE_PORT", "s3cret"}),
            failed(64,
                   "an assignment has no \"=\"; write NAME=VALUE\n"
                   "an assignment has no \"=\"; write NAME=VALUE\n"
                   "nothing was written"));
  EXPECT_EQ(out({"list", "--unsaved"}), "");
}

TEST_F(Client, SetTakesLinesAndTellsTheirMistakesWithThem) {
  EXPECT_EQ(ctlWith("# a comment\n\nIKE.IKE_PORT=501\nUPDATE.SCHEDULE= #=\n", {"set", "-"}),
            printed("IKE.IKE_PORT: 500 -> 501   (not saved)\n"
                    "UPDATE.SCHEDULE: \"0 3 * * 6\" -> \" #=\"   (not saved)\n"));
  EXPECT_EQ(ctlWith("IKE.IKE_PORT=502\n#\nIKE.NATT_PORT=x\n", {"set", "-", "IKE.NO=1"}),
            failed(65,
                   "line 3: IKE.NATT_PORT: \"x\" is not a whole number from 1 to 65535\n"
                   "IKE.NO: no such parameter\n"
                   "nothing was written"));
  EXPECT_EQ(ctlWith("\nIKE.IKE_PORT 502\n", {"set", "-"}),
            failed(64,
                   "line 2: an assignment has no \"=\"; write NAME=VALUE\n"
                   "nothing was written"));
  EXPECT_EQ(ctlWith("# nothing\n", {"set", "-"}), printed(""));
  EXPECT_EQ(out({"get", "IKE.IKE_PORT"}), "501\n");
}

TEST_F(Client, SetTakesBackWhatShowPrints) {
  (void)out({"set", "IKE.QCD_SECRET=s3cret"});
  const std::string shown = out({"show"});
  EXPECT_THAT(shown, HasSubstr("IKE.QCD_SECRET=(hidden)\n"));
  const std::string secrets = out({"show", "--secrets"});
  (void)out({"set", "IKE.IKE_PORT=501", "IKE.DPD_IDLE_TIME=1", "USERS[bob].PMP_TIMEOUT=77"});
  EXPECT_EQ(ctlWith(shown, {"set", "-"}).exitCode, 0);
  EXPECT_EQ(out({"show", "--secrets"}), secrets);
}

}  // namespace
}  // namespace system_testing
