// diff, revert and reset.
#include "tests/client/verbs/client_test.h"

namespace system_testing {
namespace {

using Undo = Client;

TEST_F(Undo, DiffTellsWhatIsNotSaved) {
  EXPECT_EQ(ctl({"diff"}), printed(""));
  setLines({"IKE.QCD_SECRET=s3cret", "IKE.EXCHANGE_TIMEOUT=120", "USERS[bob].PMP_TIMEOUT=25"});
  (void)out({"user", "add", "eve", "PMP_TIMEOUT=30"});
  (void)out({"user", "del", "alice"});
  EXPECT_EQ(ctl({"diff"}), (Outcome{1,
                                    "USERS[alice]: removed\n"
                                    "USERS[eve]: added\n"
                                    "IKE.EXCHANGE_TIMEOUT: 90 -> 120\n"
                                    "IKE.QCD_SECRET: (differs, hidden)\n"
                                    "USERS[bob].PMP_TIMEOUT: 10 -> 25\n"
                                    "USERS[eve].PMP_TIMEOUT: - -> 30\n",
                                    ""}));
  const json document = json::parse(ctl({"diff", "--json"}).out);
  EXPECT_EQ(document["changed"], true);
  EXPECT_EQ(document["removed"], json({"alice"}));
  EXPECT_EQ(document["changes"][0],
            json::parse(R"({"name": "IKE.EXCHANGE_TIMEOUT", "before": 90, "after": 120})"));
  EXPECT_EQ(document["changes"][1]["after"], nullptr);
  EXPECT_THAT(document.dump(), Not(HasSubstr("s3cret")));
  (void)out({"save"});
  EXPECT_EQ(ctl({"diff"}), printed(""));
}

TEST_F(Undo, DiffComparesWithTheDefaultsOrAFile) {
  const Outcome byDefault = ctl({"diff", "--default"});
  EXPECT_EQ(byDefault.exitCode, 1);
  EXPECT_THAT(byDefault.out, HasSubstr("IKE.EXCHANGE_TIMEOUT: 60 -> 90\n"));
  EXPECT_THAT(byDefault.out, HasSubstr("USERS[alice]: added\n"));
  EXPECT_THAT(byDefault.out, Not(HasSubstr("IKE.IKE_PORT")));
  EXPECT_EQ(ctl({"diff", "--file", settingsPath}), printed(""));
  (void)out({"set", "IKE.IKE_PORT=501"});
  EXPECT_EQ(ctl({"diff", "--file", settingsPath}), (Outcome{1, "IKE.IKE_PORT: 500 -> 501\n", ""}));
  EXPECT_EQ(ctl({"diff", "--file", "/nonexistent"}),
            failed(74, "cannot read /nonexistent: No such file or directory"));
  EXPECT_EQ(ctl({"diff", "--default", "--file", settingsPath}).exitCode, 64);
}

TEST_F(Undo, RevertTakesBackWhatIsNotSaved) {
  (void)out({"set", "IKE.EXCHANGE_TIMEOUT=120", "LOG.WALL_ON=1", "USERS[bob].PMP_TIMEOUT=25"});
  EXPECT_EQ(out({"revert", "IKE.EXCHANGE_TIMEOUT", "IKE.IKE_PORT"}),
            "IKE.EXCHANGE_TIMEOUT: 120 -> 90\n");
  EXPECT_EQ(out({"revert", "IKE"}), "nothing to change\n");
  EXPECT_EQ(out({"revert", "USERS[bob]"}), "USERS[bob].PMP_TIMEOUT: 25 -> 10\n");
  EXPECT_EQ(out({"revert", "--all"}), "LOG.WALL_ON: 1 -> 0\n");
  EXPECT_EQ(ctl({"diff"}), printed(""));
}

TEST_F(Undo, RevertBringsUsersBackAndTakesNewOnesAway) {
  (void)out({"user", "del", "bob"});
  (void)out({"user", "add", "eve"});
  EXPECT_EQ(ctl({"revert", "USERS[eve].PMP_TIMEOUT"}), printed("nothing to change\n"));
  EXPECT_THAT(out({"revert", "USERS[bob]"}), HasSubstr("USERS[bob]: added\n"));
  EXPECT_EQ(out({"user", "list"}), "alice\neve\nbob\n");
  EXPECT_EQ(out({"revert", "USERS"}), "USERS[eve]: removed\n");
  EXPECT_EQ(ctl({"diff"}), printed(""));
  (void)out({"user", "del", "alice", "bob"});
  (void)out({"revert", "--all"});
  EXPECT_EQ(ctl({"diff"}), printed(""));
}

TEST_F(Undo, ResetTakesToTheDefaults) {
  EXPECT_EQ(out({"reset", "IKE.EXCHANGE_TIMEOUT"}),
            "IKE.EXCHANGE_TIMEOUT: 90 -> 60   (not saved)\n");
  EXPECT_EQ(out({"reset", "USERS[alice]", "--json"}).find("{\n  \"changed\": true"), 0U);
  EXPECT_EQ(out({"get", "USERS[alice].PMP_TIMEOUT"}), "10\n");
  EXPECT_THAT(out({"reset", "USERS", "--save"}),
              HasSubstr("USERS[alice]: removed\nUSERS[bob]: removed\n"));
  EXPECT_EQ(ctl({"diff"}), printed(""));
  (void)out({"reset", "--all"});
  EXPECT_EQ(ctl({"diff", "--default"}), printed(""));
  EXPECT_EQ(out({"reset", "--all"}), "nothing to change\n");
}

TEST_F(Undo, ResetHasNothingToDoWithUsersWhoAreGoneAlready) {
  (void)out({"user", "del", "alice"});
  EXPECT_EQ(out({"reset", "USERS"}), "USERS[bob]: removed\n");
  EXPECT_EQ(out({"reset", "USERS"}), "nothing to change\n");
}

TEST_F(Undo, NamesAreNeededAndHaveToBeRight) {
  for (const char* verb : {"revert", "reset"}) {
    EXPECT_EQ(ctl({verb}), failed(64, "say what: names of parameters, groups or users, or --all"));
    EXPECT_EQ(ctl({verb, "IKE", "--all"}), failed(64, "give names or --all, not both"));
    EXPECT_EQ(ctl({verb, "IKE", "IKE.IKE_PROT", "UPDTE"}),
              failed(65,
                     "IKE.IKE_PROT: no such parameter; did you mean IKE.IKE_PORT?\n"
                     "UPDTE: no such parameter; did you mean UPDATE?"));
  }
}

}  // namespace
}  // namespace system_testing
