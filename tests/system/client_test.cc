// The commands of lparamsctl that read and change settings, on the real agent.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/module/child_process.h"
#include "tests/support/another_user.h"
#include "tests/system/system_test.h"

using client_testing::failed;
using client_testing::Outcome;
using client_testing::printed;
using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

namespace system_testing {
namespace {

class Client : public SystemTest {
 protected:
  void SetUp() override {
    host::writeFile(settingsPath, sourceFile("examples/localsettings.ini"));
    start();
  }

  /// The output of a command that succeeds.
  std::string out(const std::vector<std::string>& arguments) const {
    const Outcome outcome = ctl(arguments);
    EXPECT_EQ(outcome, printed(outcome.out));
    return outcome.out;
  }

  Outcome ctlWith(const std::string& in, std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"--socket", socketPath});
    return client_testing::runClient(arguments, {.in = in});
  }
};

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
  (void)out({"set", "IKE.QCD_SECRET=s3cret"});
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
  EXPECT_EQ(json::parse(out({"describe", "IKE.IKE_PORT", "--json"}))["IKE.IKE_PORT"]["max"], 65535);
  EXPECT_EQ(ctl({"describe", "NAT_POLICY"}),
            failed(65, "\"NAT_POLICY\" is no group and no parameter; did you mean NATT_POLICY?"));
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

TEST_F(Client, GetPrintsValuesOfAnyGroupByteForByte) {
  EXPECT_EQ(out({"get", "IKE.IKE_PORT", "UPDATE.SCHEDULE", "USERS[bob].PMP_TIMEOUT",
                 "USERS[0].NAME", "IKE.DPD_IDLE_TIME"}),
            "500\n0 3 * * 6\n10\nalice\n45\n");
  EXPECT_EQ(json::parse(out({"get", "IKE.IKE_PORT", "USERS[bob].NAME", "--json"})),
            json::parse(R"({"IKE": {"IKE_PORT": 500}, "USERS": {"bob": {"NAME": "bob"}}})"));
  EXPECT_EQ(ctl({"get", "IKE.IKE_PROT", "USERS[bbo].NAME"}),
            failed(65,
                   "IKE.IKE_PROT: no such parameter; did you mean IKE.IKE_PORT?\n"
                   "USERS[bbo].NAME: no such user; did you mean USERS[bob].NAME?"));
  EXPECT_EQ(ctl({"get", "IKE"}),
            failed(64, "\"get\" prints single parameters; \"show\" prints groups and users"));
}

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

TEST_F(Client, ShowMakesACommentOfWhatCouldNotBeTakenBack) {
  stop();
  std::string text = sourceFile("examples/localsettings.ini");
  text.replace(text.find("SCHEDULE="), 9, "SCHEDULE=a\tb");
  host::writeFile(settingsPath, text);
  start();
  EXPECT_THAT(out({"show", "UPDATE"}), HasSubstr("\n# UPDATE.SCHEDULE=\"a\\x09b"));
  (void)out({"user", "del", "alice", "bob"});
  EXPECT_EQ(out({"show", "USERS"}), "# USERS (no entries)\n");
  EXPECT_EQ(ctl({"show", "UPDTE"}), failed(65, "UPDTE: no such parameter; did you mean UPDATE?"));
}

TEST_F(Client, UsersAreAddedShownChangedRenamedAndRemovedByName) {
  EXPECT_EQ(out({"user", "list"}), "alice\nbob\n");
  EXPECT_EQ(json::parse(out({"user", "list", "--json"})), json({"alice", "bob"}));
  EXPECT_EQ(out({"user", "add", "carl", "PMP_TIMEOUT=25"}), "");
  EXPECT_EQ(out({"user", "set", "carl", "PMP_TIMEOUT=26"}),
            "USERS[carl].PMP_TIMEOUT: 25 -> 26   (not saved)\n");
  EXPECT_EQ(out({"user", "rename", "carl", "karl"}), "");
  EXPECT_THAT(out({"user", "show", "karl"}), HasSubstr("USERS[karl].PMP_TIMEOUT=26\n"));
  EXPECT_EQ(out({"user", "del", "alice", "1"}), "");
  EXPECT_EQ(out({"user", "list"}), "karl\n");
}

TEST_F(Client, UsersWhoCannotBeAreRefused) {
  const struct {
    std::vector<std::string> arguments;
    Outcome outcome;
  } ROWS[] = {
      {{"user", "add", "bob"}, failed(65, "USERS[2]: there is a user \"bob\" already")},
      {{"user", "add", ""}, failed(65, "USERS[2]: a user needs a name")},
      {{"user", "add", "eve", "PMP_TIMEOUT=1", "PMP_TIMOUT=9"},
       failed(65,
              "USERS[eve].PMP_TIMEOUT: \"1\" is not a whole number from 5 to 4294967295\n"
              "USERS[eve].PMP_TIMOUT: no such parameter; did you mean USERS[eve].PMP_TIMEOUT?")},
      {{"user", "add", "eve", "PMP_TIMEOUT"},
       failed(64, "an assignment has no \"=\"; write NAME=VALUE")},
      {{"user", "rename", "bob", "alice"},
       failed(65, "USERS[bob].NAME: there is a user \"alice\" already")},
      {{"user", "del", "bob", "nobody"}, failed(65, "USERS[nobody]: no such user")},
      {{"user", "show", "bbo"}, failed(65, "USERS[bbo]: no such user; did you mean USERS[bob]?")},
  };
  for (const auto& row : ROWS) EXPECT_EQ(ctl(row.arguments), row.outcome);
  EXPECT_EQ(out({"user", "list"}), "alice\nbob\n");
}

TEST_F(Client, OutputThatCannotBeWrittenIsAnError) {
  EXPECT_EQ(
      client_testing::runClient({"--socket", socketPath, "list"}, {.outputPath = "/dev/full"}),
      failed(74, "cannot write the output"));
}

TEST_F(Client, WhoMayNotWriteSeesNoSecretAndChangesNothing) {
  if (const auto reason = testing_support::whyNoOtherUser(); !reason.empty()) {
    GTEST_SKIP() << reason;
  }
  (void)out({"set", "IKE.QCD_SECRET=s3cret"});
  ASSERT_EQ(chmod(directory.path.c_str(), 0755), 0);
  ASSERT_EQ(chmod(socketPath.c_str(), 0666), 0);
  host::runInChild([&] {
    testing_support::dropRights();
    EXPECT_EQ(ctl({"get", "IKE.QCD_SECRET"}),
              failed(77, "IKE.QCD_SECRET: a secret, which only who may write can read"));
    EXPECT_THAT(out({"show", "--secrets"}), HasSubstr("IKE.QCD_SECRET=(hidden)\n"));
    EXPECT_EQ(json::parse(out({"list", "--json"}))["IKE"]["QCD_SECRET"], nullptr);
    EXPECT_EQ(ctl({"set", "IKE.IKE_PORT=501"}).exitCode, 77);
    EXPECT_EQ(ctl({"save"}).exitCode, 77);
  });
  EXPECT_EQ(out({"get", "IKE.IKE_PORT"}), "500\n");
}

}  // namespace
}  // namespace system_testing
