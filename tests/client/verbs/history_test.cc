#include <chrono>
#include <thread>

#include "tests/client/verbs/client_test.h"

namespace system_testing {
namespace {

using testing::MatchesRegex;

/// Revision 1 is the example's settings, as they were found.
class ClientHistory : public Client {};

TEST_F(ClientHistory, TellsWhoHasSavedWhatAndWhy) {
  setLines({"IKE.QCD_SECRET=s3cret"});
  (void)out({"set", "IKE.IKE_PORT=501", "--save", "--message", "ports"});
  (void)out({"user", "add", "eve"});
  (void)out({"user", "del", "bob"});
  EXPECT_EQ(out({"save", "--message", "eve\nfor bob"}), "saved\n");
  EXPECT_EQ(out({"save", "--message", "again"}), "saved\n");
  EXPECT_THAT(out({"history"}),
              MatchesRegex("3  2[-0-9]+T[:0-9]+Z  uid [0-9]+, lparamsctl.[0-9]+.  "
                           "eve.x0afor bob\n"
                           "    USERS.bob.: removed\n"
                           "    USERS.eve.: added\n"
                           "2  [^ ]*  uid [0-9]+, lparamsctl.[0-9]+.  ports\n"
                           "    IKE.IKE_PORT: 500 -> 501\n"
                           "    IKE.QCD_SECRET: \\(hidden\\) -> \\(hidden\\)\n"
                           "1  [^ ]*  uid [0-9]+, lparams_agent.[0-9]+.  [^\n]*\n"));
  const json all = json::parse(out({"history", "--json"}));
  ASSERT_EQ(all.size(), 3u);
  EXPECT_EQ(all[0]["revision"], 3);
  EXPECT_EQ(all[0]["added"], json({"eve"}));
  EXPECT_EQ(all[0]["removed"], json({"bob"}));
  EXPECT_EQ(all[1]["message"], "ports");
  EXPECT_EQ(all[1]["changes"],
            json::parse(R"([{"name": "IKE.IKE_PORT", "before": 500, "after": 501},
                            {"name": "IKE.QCD_SECRET", "before": null, "after": null,
                             "secret": true}])"));
  EXPECT_THAT(out({"status"}), HasSubstr("history: 3\n"));
}

TEST_F(ClientHistory, RollbackTakesEverythingBack) {
  const std::string before = out({"show", "--secrets"});
  setLines({"IKE.QCD_SECRET=s3cret"});
  (void)out({"set", "IKE.IKE_PORT=501", "IKE.DPD_IDLE_TIME=50", "--save"});
  (void)out({"user", "del", "alice"});
  (void)out({"user", "add", "eve", "--save"});
  const std::string after = out({"show", "--secrets"});
  EXPECT_THAT(out({"rollback", "1"}),
              testing::StartsWith("USERS[eve]: removed\nUSERS[alice]: added\n"));
  EXPECT_EQ(out({"show", "--secrets"}), before);
  EXPECT_EQ(out({"rollback", "1"}), "nothing to change\n");
  EXPECT_EQ(out({"user", "list"}), "alice\nbob\n") << "in their order";
  (void)out({"rollback", "3", "--save"});
  EXPECT_EQ(out({"show", "--secrets"}), after);
  EXPECT_EQ(out({"rollback", "1", "--save", "--message", "no eve"}).find("(not saved)"),
            std::string::npos);
  EXPECT_THAT(host::readFile(settingsPath), Not(HasSubstr("eve")));
  const json all = json::parse(out({"history", "--json"}));
  EXPECT_EQ(all[0]["revision"], 4);
  EXPECT_EQ(all[0]["message"], "no eve");
}

TEST_F(ClientHistory, RollbackSaysWhatItSavesAndWhatIsNotThere) {
  (void)out({"set", "IKE.IKE_PORT=501", "--save"});
  EXPECT_EQ(out({"rollback", "1", "--save"}), "IKE.IKE_PORT: 501 -> 500\n");
  EXPECT_EQ(json::parse(out({"history", "--json"}))[0]["message"], "rollback to revision 1");
  EXPECT_EQ(ctl({"rollback", "7"}),
            failed(65, "there is no revision 7; there are those from 1 to 3"));
  EXPECT_EQ(ctl({"--file", settingsPath, "rollback", "1"}).exitCode, 64);
}

TEST_F(ClientHistory, DiffComparesWithARevision) {
  (void)out({"set", "IKE.IKE_PORT=501", "--save"});
  (void)out({"set", "IKE.IKE_PORT=502"});
  EXPECT_EQ(ctl({"diff", "--revision", "1"}).out, "IKE.IKE_PORT: 500 -> 502\n");
  EXPECT_EQ(ctl({"diff", "--revision", "2"}).exitCode, 1);
  (void)out({"rollback", "1"});
  EXPECT_EQ(ctl({"diff", "--revision", "1"}), printed(""));
}

TEST_F(ClientHistory, LeavesOutWhatIsDamagedAndSaysSo) {
  (void)out({"set", "IKE.IKE_PORT=501", "--save"});
  host::writeFile(stateDir + "/history.1", "?");
  const Outcome outcome = ctl({"history"});
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_THAT(outcome.out, HasSubstr("    IKE.IKE_PORT: 500 -> 501\n"));
  EXPECT_EQ(outcome.err,
            "lparamsctl: warning: revision 1 is left out: its checksum does not fit\n");
}

TEST_F(ClientHistory, ConfirmLetsChangesStay) {
  EXPECT_EQ(ctl({"confirm"}), failed(75, "confirming failed: no changes wait for confirmation"));
  const std::string document = directory.path + "document";
  host::writeFile(document, "IKE.IKE_PORT=501\n");
  EXPECT_THAT(out({"apply", "--save", "--message", "ports", "--confirm", "3600", document}),
              HasSubstr("\"lparamsctl confirm\" keeps them, or they go back in 3600 s"));
  EXPECT_THAT(out({"status"}), HasSubstr("pendingConfirmation: 2"));
  host::writeFile(document, "IKE.IKE_PORT=502\n");
  const Outcome second = ctl({"apply", "--confirm", "3600", document});
  EXPECT_EQ(second.exitCode, 75);
  EXPECT_THAT(second.err, HasSubstr("other changes wait for confirmation until 2"));
  EXPECT_EQ(out({"confirm"}), "confirmed\n");
  EXPECT_THAT(out({"status"}), HasSubstr("pendingConfirmation: no\n"));
  EXPECT_EQ(out({"get", "IKE.IKE_PORT"}), "501\n");
  EXPECT_EQ(json::parse(out({"history", "--json"}))[0]["message"], "ports");
}

TEST_F(ClientHistory, WithoutAConfirmationChangesGoBack) {
  const std::string document = directory.path + "document";
  host::writeFile(document, "IKE.IKE_PORT=501\n");
  (void)out({"apply", "--save", "--confirm", "1", document});
  while (out({"status"}).find("pendingConfirmation: no\n") == std::string::npos) {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  EXPECT_EQ(out({"get", "IKE.IKE_PORT"}), "500\n");
  EXPECT_EQ(out({"list", "--unsaved"}), "");
  EXPECT_THAT(out({"history"}), HasSubstr("not confirmed in time: the changes have gone back\n"
                                          "    IKE.IKE_PORT: 501 -> 500\n"));
}

}  // namespace
}  // namespace system_testing
