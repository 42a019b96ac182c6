// The commands "user add" and "user del", as a user runs them.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "client/settings.h"
#include "tests/catalogue/expected_groups.h"
#include "tests/client/client_process.h"
#include "tests/client/scripted_agent.h"
#include "tests/support/param_forms.h"
#include "tests/support/readable_bytes.h"

namespace client_testing {
namespace {

using namespace LPARAMS::Server;
using testing_support::hex;
using testing_support::wireBytes;
using Commands = std::vector<std::string>;

/// The record of a list of users who have nothing but a name.
std::string recordOf(const std::vector<std::string>& names) {
  client::Settings settings;
  for (const std::string& name : names) listAdd(settings.userList)->NAME.value = name;
  return wireBytes(settings.userList);
}

Outcome runUser(const ScriptedAgent& agent, std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), {"--socket", agent.socketPath, "user"});
  return runClient(arguments);
}

TEST(ClientUserAdd, AppendsAnEntryWithDefaults) {
  ScriptedAgent agent({done(recordOf({"anna"})), done()});
  EXPECT_EQ(runUser(agent, {"add", "boris"}), printed(""));
  EXPECT_EQ(agent.commands(),
            (Commands{"read USERS", "write USERS " + hex(recordOf({"anna", "boris"}))}));
}

TEST(ClientUserAdd, BytesOfTheFirstEntry) {
  ScriptedAgent agent({done(recordOf({})), done()});
  EXPECT_EQ(
      runUser(agent, {"add", "bo", "PMP_AUTH=pmpauth_psk", "PMP_PSK_NAME=k", "PMP_TIMEOUT=6"}),
      printed(""));
  const std::string record =
      expectedGroup("USER").record(initiallyBut({{"NAME", {"bo", "02 00 00 00 62 6F"}},
                                                 {"PMP_AUTH", {"PMPAUTH_PSK", "01 00 00 00"}},
                                                 {"PMP_TIMEOUT", {"6", "06 00 00 00"}},
                                                 {"PMP_PSK_NAME", {"k", "01 00 00 00 6B"}}}));
  EXPECT_EQ(agent.commands(), (Commands{"read USERS", "write USERS 01 00 00 00 " + hex(record)}));
}

TEST(ClientUserAdd, NameMayBeThatOfACommand) {
  ScriptedAgent agent({done(recordOf({})), done()});
  EXPECT_EQ(runUser(agent, {"add", "show"}), printed(""));
  EXPECT_EQ(agent.commands().back(), "write USERS " + hex(recordOf({"show"})));
}

TEST(ClientUserAdd, TakenNameIsRefused) {
  ScriptedAgent agent({done(recordOf({"anna", "boris"})), done()});
  EXPECT_EQ(runUser(agent, {"add", "boris"}), failed(2, "there is a user \"boris\" already"));
  EXPECT_EQ(agent.commands(), Commands{"read USERS"});
}

TEST(ClientUserAdd, OneMistakeAndTheListIsNotAskedFor) {
  const struct {
    std::vector<std::string> arguments;
    std::string message;
  } ROWS[] = {
      {{"add", ""}, "a user needs a name"},
      {{"add", "a\nb"}, R"(NAME: "a\x0ab" is not one line of text without control characters)"},
      {{"add", "anna", "PMP_TIMEOUT=1"},
       "PMP_TIMEOUT: \"1\" is not a whole number from 5 to 4294967295"},
      {{"add", "anna", "PMP_TIMEOUT"}, "an assignment has no \"=\"; write NAME=VALUE"},
      {{"add", "anna", "USERS[0].PMP_TIMEOUT=9"},
       "USER has no parameter \"USERS[0].PMP_TIMEOUT\"; it has " + expectedNamesOf("USER")},
  };
  for (const auto& row : ROWS) {
    ScriptedAgent agent({done(recordOf({})), done()});
    EXPECT_EQ(runUser(agent, row.arguments), failed(2, row.message));
    EXPECT_FALSE(agent.wasReached());
  }
}

TEST(ClientUserAdd, RefusalIsReported) {
  ScriptedAgent agent({done(recordOf({})), refused("the session may not write")});
  EXPECT_EQ(runUser(agent, {"add", "anna"}),
            failed(1, "writing USERS failed: the session may not write"));
}

struct DelRow {
  std::vector<std::string> before;
  const char* user;
  std::vector<std::string> after;
};

const DelRow DEL_ROWS[] = {
    {{"anna", "boris", "clara"}, "boris", {"anna", "clara"}},
    {{"anna", "boris", "clara"}, "0", {"boris", "clara"}},
    {{"anna", "boris", "clara"}, "2", {"anna", "boris"}},
    {{"anna", "0"}, "0", {"anna"}},
    {{"anna", "anna"}, "1", {"anna"}},
    {{"", "anna"}, "", {"anna"}},
    {{"[a,b]"}, "[a,b]", {}},
};

TEST(ClientUserDel, RemovesTheEntryWithTheNameOrTheIndex) {
  for (const DelRow& row : DEL_ROWS) {
    ScriptedAgent agent({done(recordOf(row.before)), done()});
    EXPECT_EQ(runUser(agent, {"del", row.user}), printed(""));
    EXPECT_EQ(agent.commands(),
              (Commands{"read USERS", "write USERS " + hex(recordOf(row.after))}));
  }
}

TEST(ClientUserDel, EntryThatIsNotThereOrNotTheOnlyOneIsRefused) {
  const struct {
    const char* user;
    const char* message;
  } ROWS[] = {
      {"boris", "there is no user \"boris\""},
      {"2", "there is no user \"2\""},
      {"-1", "there is no user \"-1\""},
      {"18446744073709551616", "there is no user \"18446744073709551616\""},
      {"", "there is no user \"\""},
      {"anna", "several users have the name \"anna\"; give the index"},
  };
  for (const auto& row : ROWS) {
    ScriptedAgent agent({done(recordOf({"anna", "anna"})), done()});
    EXPECT_EQ(runUser(agent, {"del", "--", row.user}), failed(2, row.message));
    EXPECT_EQ(agent.commands(), Commands{"read USERS"});
  }
}

}  // namespace
}  // namespace client_testing
