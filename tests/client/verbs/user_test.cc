#include "tests/client/verbs/client_test.h"

namespace system_testing {
namespace {

TEST_F(Client, UsersAreAddedShownChangedRenamedAndRemovedByName) {
  EXPECT_EQ(out({"user", "list"}), "alice\nbob\n");
  EXPECT_EQ(json::parse(out({"user", "list", "--json"})), json({"alice", "bob"}));
  EXPECT_EQ(out({"user", "add", "carl", "PMP_TIMEOUT=25"}),
            "USERS[carl]: added\nUSERS[carl].PMP_TIMEOUT: - -> 25   (not saved)\n");
  EXPECT_EQ(out({"user", "set", "carl", "PMP_TIMEOUT=26"}),
            "USERS[carl].PMP_TIMEOUT: 25 -> 26   (not saved)\n");
  EXPECT_EQ(out({"user", "rename", "carl", "karl"}),
            "USERS[carl].NAME: carl -> karl   (not saved)\n");
  EXPECT_THAT(out({"user", "show", "karl"}), HasSubstr("USERS[karl].PMP_TIMEOUT=26\n"));
  EXPECT_EQ(out({"user", "del", "alice", "1"}), "USERS[alice]: removed\nUSERS[1]: removed\n");
  EXPECT_EQ(out({"user", "list"}), "karl\n");
}

TEST_F(Client, UsersWhoCannotBeAreRefused) {
  const struct {
    std::vector<std::string> arguments;
    Outcome outcome;
  } ROWS[] = {
      {{"user", "add", "bob"},
       failed(65,
              "USERS[2]: there is a user \"bob\" already\n"
              "nothing was written")},
      {{"user", "add", ""},
       failed(65,
              "USERS[2]: a user needs a name\n"
              "nothing was written")},
      {{"user", "add", "eve", "PMP_TIMEOUT=1", "PMP_TIMOUT=9"},
       failed(65,
              "USERS[eve].PMP_TIMEOUT: \"1\" is not a whole number from 5 to 4294967295\n"
              "USERS[eve].PMP_TIMOUT: no such parameter; did you mean USERS[eve].PMP_TIMEOUT?\n"
              "nothing was written")},
      {{"user", "add", "eve", "PMP_TIMEOUT"},
       failed(64,
              "an assignment has no \"=\"; write NAME=VALUE\n"
              "nothing was written")},
      {{"user", "rename", "bob", "alice"},
       failed(65,
              "USERS[bob].NAME: there is a user \"alice\" already\n"
              "nothing was written")},
      {{"user", "del", "bob", "nobody"},
       failed(65,
              "USERS[nobody]: no such user\n"
              "nothing was written")},
      {{"user", "show", "bbo"}, failed(65, "USERS[bbo]: no such user; did you mean USERS[bob]?")},
  };
  for (const auto& row : ROWS) EXPECT_EQ(ctl(row.arguments), row.outcome);
  EXPECT_EQ(out({"user", "list"}), "alice\nbob\n");
}

}  // namespace
}  // namespace system_testing
