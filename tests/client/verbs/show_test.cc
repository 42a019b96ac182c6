#include "tests/client/client_on_terminal.h"
#include "tests/client/verbs/client_test.h"

namespace system_testing {
namespace {

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

TEST_F(Client, ShowLeavesOutUsersWhoWereRemovedAndAreStillSaved) {
  (void)out({"user", "del", "alice"});
  EXPECT_THAT(out({"show", "USERS"}), HasSubstr("USERS[bob].NAME=bob\n"));
  EXPECT_THAT(out({"show"}), Not(HasSubstr("alice")));
  (void)out({"user", "del", "bob"});
  EXPECT_EQ(out({"show", "USERS"}), "# USERS (no entries)\n");
}

TEST_F(Client, ShowAsJsonHidesSecretsTillTheyAreAskedFor) {
  setLines({"IKE.QCD_SECRET=s3cret"});
  EXPECT_EQ(json::parse(out({"show", "IKE", "--json"}))["IKE"]["QCD_SECRET"], nullptr);
  EXPECT_EQ(json::parse(out({"show", "--json", "--secrets"}))["IKE"]["QCD_SECRET"], "s3cret");
  EXPECT_EQ(json::parse(out({"user", "show", "bob", "--json"}))["USERS"]["bob"]["PMP_TIMEOUT"], 10);
}

TEST_F(Client, ShowMakesACommentOfWhatDoesNotShowWhatItIs) {
  setLines({"UPDATE.PATH=a\xe2\x80\xae", "UPDATE.URL=\xff"});
  EXPECT_THAT(out({"show"}), HasSubstr("\n# UPDATE.PATH=\"a\\xe2\\x80\\xae\"\n"));
  EXPECT_THAT(out({"show"}), HasSubstr("\n# UPDATE.URL=\"\\xff\"\n"));
}

TEST_F(Client, WhatIsPrintedIsTheSameOnATerminal) {
  const std::vector<std::vector<std::string>> commands = {
      {"list"},         {"list", "ike", "--json"}, {"describe", "NATT_POLICY"},
      {"show"},         {"get", "IKE.IKE_PORT"},   {"diff", "--default"},
      {"user", "list"}, {"history", "--json"},     {"backup"},
  };
  for (std::vector<std::string> command : commands) {
    const std::string piped = ctl(command).out;
    EXPECT_NE(piped, "") << command.front();
    command.insert(command.begin(), {"--socket", socketPath});
    client_testing::ClientOnTerminal terminal(command, {});
    EXPECT_EQ(terminal.rest(), piped);
  }
}

}  // namespace
}  // namespace system_testing
