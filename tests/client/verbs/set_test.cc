#include "tests/client/client_on_terminal.h"
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
}

TEST_F(Client, SetTellsWhatItHasChangedThoughItWasNotSaved) {
  host::writeFile(settingsPath, "edited");
  const Outcome outcome = ctl({"set", "--save", "IKE.IKE_PORT=501"});
  EXPECT_EQ(outcome.exitCode, 74);
  EXPECT_EQ(outcome.out, "IKE.IKE_PORT: 500 -> 501   (not saved)\n");
  EXPECT_THAT(outcome.err, HasSubstr("lparamsctl save --force"));
  EXPECT_EQ(json::parse(ctl({"set", "--save", "--json", "IKE.IKE_PORT=502"}).out)["saved"], false);
  EXPECT_EQ(out({"get", "IKE.IKE_PORT"}), "502\n");
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
  EXPECT_EQ(ctlWith("# nothing\n", {"set", "-"}), printed("nothing to change\n"));
  EXPECT_EQ(out({"get", "IKE.IKE_PORT"}), "501\n");
}

TEST_F(Client, SetTakesBackWhatShowPrints) {
  setLines({"IKE.QCD_SECRET=s3cret"});
  const std::string shown = out({"show"});
  EXPECT_THAT(shown, HasSubstr("IKE.QCD_SECRET=(hidden)\n"));
  const std::string secrets = out({"show", "--secrets"});
  (void)out({"set", "IKE.IKE_PORT=501", "IKE.DPD_IDLE_TIME=1", "USERS[bob].PMP_TIMEOUT=77"});
  EXPECT_EQ(ctlWith(shown, {"set", "-"}).exitCode, 0);
  EXPECT_EQ(out({"show", "--secrets"}), secrets);
}

TEST_F(Client, SetTellsMistakesOfFormTogetherWithTheOthers) {
  EXPECT_EQ(ctlWith("IKE.IKE_PORT\nIKE.NATT_PORT=0\n", {"set", "LOG.WALL_ON", "IKE.NO=1", "-"}),
            failed(64,
                   "an assignment has no \"=\"; write NAME=VALUE\n"
                   "line 1: an assignment has no \"=\"; write NAME=VALUE\n"
                   "IKE.NO: no such parameter\n"
                   "line 2: IKE.NATT_PORT: \"0\" is not a whole number from 1 to 65535\n"
                   "nothing was written"));
}

TEST_F(Client, SetTakesValuesFromFilesAndTheStandardInput) {
  const std::string file = directory.path + "value";
  host::writeFile(file, "two words\n");
  EXPECT_EQ(out({"set", "UPDATE.SCHEDULE=@" + file, "UPDATE.PATH=@@literal"}),
            "UPDATE.SCHEDULE: \"0 3 * * 6\" -> \"two words\"   (not saved)\n"
            "UPDATE.PATH: \"\" -> @literal   (not saved)\n");
  EXPECT_EQ(ctlWith("s3cret\n", {"set", "IKE.QCD_SECRET=@-"}),
            printed("IKE.QCD_SECRET: (hidden) -> (hidden)   (not saved)\n"));
  EXPECT_EQ(out({"get", "IKE.QCD_SECRET"}), "s3cret\n");
  EXPECT_EQ(ctl({"set", "UPDATE.PATH=@/nonexistent"}),
            failed(74, "cannot read /nonexistent: No such file or directory"));
  host::writeFile(file, std::string(1'048'576, 'x'));
  EXPECT_THAT(ctl({"set", "UPDATE.PATH=@" + file}).err,
              HasSubstr("a text of 1048576 bytes is too long; expected at most 65536\n"));
  host::writeFile(file, std::string(1'048'577, 'x'));
  EXPECT_EQ(ctl({"set", "UPDATE.PATH=@" + file}),
            failed(78, file + " is larger than 1048576 bytes"));
  EXPECT_EQ(ctlWith("x", {"set", "UPDATE.PATH=@-", "-"}),
            failed(64, "the standard input can be given only once"));
}

TEST_F(Client, SetWritesNothingOfAnInputThatCannotBeRead) {
  for (const char* argument : {"-", "UPDATE.PATH=@-"}) {
    EXPECT_EQ(client_testing::runClient({"--socket", socketPath, "set", "LOG.WALL_ON=1", argument},
                                        {.inputPath = "/"}),
              failed(74, "cannot read the standard input; nothing was written"));
  }
  EXPECT_EQ(ctl({"diff"}), printed(""));
}

TEST_F(Client, SetWarnsOfSecretsOnTheCommandLine) {
  const Outcome outcome = ctl({"set", "IKE.QCD_SECRET=s3cret"});
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_EQ(outcome.out, "IKE.QCD_SECRET: (hidden) -> (hidden)   (not saved)\n");
  EXPECT_EQ(outcome.err,
            "lparamsctl: warning: IKE.QCD_SECRET: other users may have seen this secret in the "
            "list of processes; --ask and NAME=@FILE keep it out of there\n");
  EXPECT_EQ(out({"set", "IKE.QCD_SECRET=(hidden)"}), "nothing to change\n");
  EXPECT_EQ(out({"set", "IKE.QCD_SECRET="}),
            "IKE.QCD_SECRET: (hidden) -> (hidden)   (not saved)\n");
}

TEST_F(Client, SetTakesTextsThatDoNotShowWhatTheyAreOnlyIfAsked) {
  const char* const texts[] = {"\xff", "\x80", "a\xc2\x85", "a\xe2\x80\xae"};
  for (const std::string text : texts) {
    EXPECT_THAT(ctl({"set", "UPDATE.PATH=" + text}).err,
                HasSubstr(" does not show what it is; --bytes takes it all the same"));
    EXPECT_EQ(ctl({"set", "UPDATE.PATH=" + text}).exitCode, 65);
    EXPECT_EQ(ctl({"user", "add", text}).exitCode, 65);
    (void)out({"set", "--bytes", "UPDATE.PATH=" + text});
    EXPECT_EQ(out({"get", "UPDATE.PATH"}), text + "\n");
    EXPECT_EQ(out({"set", "UPDATE.PATH=" + text}).find("UPDATE.PATH: \""), 0U) << "it may stay";
  }
  EXPECT_EQ(out({"set", "UPDATE.PATH=d\xc3\xa9j\xc3\xa0"}),
            "UPDATE.PATH: \"a\\xe2\\x80\\xae\" -> d\xc3\xa9j\xc3\xa0   (not saved)\n");
}

TEST_F(Client, SetAsJsonIsOneDocument) {
  EXPECT_EQ(json::parse(out({"set", "IKE.IKE_PORT=501", "LOG.WALL_ON=0", "--json"})),
            json::parse(R"({"changed": true, "saved": false, "added": [], "removed": [],
                            "moved": [], "changes": [
                              {"name": "IKE.IKE_PORT", "before": 500, "after": 501}]})"));
  EXPECT_EQ(json::parse(out({"set", "IKE.IKE_PORT=501", "--json", "--save"}))["saved"], true);
}

TEST_F(Client, SetAsksForSecretsWithoutAnEcho) {
  using client_testing::ClientOnTerminal;
  const std::vector<std::string> command = {"--socket", socketPath, "set", "--ask",
                                            "IKE.QCD_SECRET"};
  ClientOnTerminal asking(command, {}, ClientOnTerminal::Echoing);
  EXPECT_EQ(asking.outputUntil("SECRET: "), "IKE.QCD_SECRET: ");
  asking.type("s3cret\n");
  EXPECT_EQ(asking.outputUntil("more: "), "\nIKE.QCD_SECRET, once more: ");
  asking.type("s3cret\n");
  EXPECT_EQ(asking.rest(), "\nIKE.QCD_SECRET: (hidden) -> (hidden)   (not saved)\n");
  EXPECT_EQ(asking.exitCode(), 0);
  EXPECT_EQ(out({"get", "IKE.QCD_SECRET"}), "s3cret\n");

  ClientOnTerminal mistyping(command, {}, ClientOnTerminal::Echoing);
  (void)mistyping.outputUntil("SECRET: ");
  mistyping.type("one\n");
  (void)mistyping.outputUntil("more: ");
  mistyping.type("other\n");
  EXPECT_THAT(mistyping.rest(), HasSubstr("the two are not the same; nothing was written\n"));
  EXPECT_EQ(mistyping.exitCode(), 65);

  ClientOnTerminal interrupted(command, {}, ClientOnTerminal::Echoing);
  (void)interrupted.outputUntil("SECRET: ");
  interrupted.interrupt();
  EXPECT_EQ(interrupted.exitCode(), -1);
  EXPECT_EQ(out({"get", "IKE.QCD_SECRET"}), "s3cret\n");
}

TEST_F(Client, SetAsksOnlyOnATerminal) {
  EXPECT_EQ(client_testing::runClient({"--socket", socketPath, "set", "--ask", "IKE.QCD_SECRET"},
                                      {.in = "s3cret\ns3cret\n"}),
            failed(64, "there is no terminal to ask on; NAME=@FILE and NAME=@- read a value"));
}

}  // namespace
}  // namespace system_testing
