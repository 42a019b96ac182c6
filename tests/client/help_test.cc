// The command line itself.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/client/client_process.h"

namespace client_testing {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

TEST(ClientCommandLine, VersionIsPrinted) {
  const Outcome outcome = runClient({"--version"});
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_THAT(outcome.out,
              MatchesRegex("lparamsctl [0-9.]+, bridge protocol [0-9]+, catalogue [0-9a-f]+\n"));
}

TEST(ClientCommandLine, EveryCommandHasHelp) {
  const std::vector<std::string> commands[] = {{},
                                               {"list"},
                                               {"describe"},
                                               {"get"},
                                               {"show"},
                                               {"set"},
                                               {"user"},
                                               {"history"},
                                               {"rollback"},
                                               {"confirm"},
                                               {"save"},
                                               {"status"},
                                               {"watch"},
                                               {"check"},
                                               {"fmt"},
                                               {"user", "list"},
                                               {"user", "show"},
                                               {"user", "add"},
                                               {"user", "set"},
                                               {"user", "rename"},
                                               {"user", "del"}};
  for (std::vector<std::string> arguments : commands) {
    arguments.emplace_back("--help");
    const Outcome outcome = runClient(arguments);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.out, HasSubstr("Usage: lparamsctl"));
    EXPECT_EQ(outcome.err, "");
  }
}

TEST(ClientCommandLine, HelpHasTheDefaultsOfTheGeneralOptions) {
  const std::string help = runClient({"--help"}).out;
  EXPECT_THAT(help, HasSubstr("--socket PATH=/run/lparams/agent.sock "));
  EXPECT_THAT(help, HasSubstr("--timeout SECONDS:INT in [1 - 86400]=30\n"));
}

TEST(ClientCommandLine, HelpOfACommandEndsWithItsNotes) {
  EXPECT_THAT(runClient({"show", "--help"}).out, EndsWith("\n  lparamsctl show --secrets IKE\n"));
}

TEST(ClientCommandLine, ExamplesAreLegal) {
  // As they stand in the help texts; without an agent they get as far as the socket.
  const std::vector<std::string> examples[] = {
      {"list", "*TIMEOUT*"},
      {"list", "ike", "--changed"},
      {"list", "--unsaved"},
      {"list", "--json"},
      {"show", "USERS"},
      {"show", "--secrets", "IKE"},
      {"get", "LOG.LOG_LEVEL"},
      {"get", "IKE.IKE_PORT", "IKE.NATT_PORT", "USERS[anna].PMP_TIMEOUT"},
      {"set", "LOG.LOG_LEVEL=_LL_DETAILS", "IKE.NATT_PORT=4500"},
      {"set", "IKE.IKE_PORT=500", "IKE.PERSISTENT_SA=true"},
      {"set", "--save", "USERS[anna].PMP_TIMEOUT=20"},
      {"user", "list"},
      {"user", "show", "anna"},
      {"user", "add", "anna"},
      {"user", "add", "anna", "PMP_AUTH=PMPAUTH_PSK", "PMP_PSK_NAME=office"},
      {"user", "set", "anna", "PMP_TIMEOUT=20", "PMP_AUTH=PMPAUTH_PSK"},
      {"user", "rename", "anna", "berta"},
      {"user", "del", "anna"},
      {"user", "del", "0"},
      {"save"},
      {"save", "--force"},
      {"save", "--message", "new ports"},
      {"set", "--save", "--message", "new ports", "IKE.IKE_PORT=500"},
      {"diff", "--revision", "12"},
      {"history"},
      {"history", "--json"},
      {"rollback", "12"},
      {"rollback", "12", "--save", "--message", "the new ports did not work"},
      {"confirm"},
      {"status"},
      {"watch"},
      {"watch", "USERS[bob]"},
  };
  for (std::vector<std::string> arguments : examples) {
    arguments.insert(arguments.begin(), {"--socket", "/nonexistent"});
    EXPECT_EQ(runClient(arguments),
              failed(69, "cannot reach the agent at /nonexistent: No such file or directory"));
  }
}

TEST(ClientCommandLine, WhatPrintsTakesJson) {
  const std::vector<std::vector<std::string>> verbs = {
      {"confirm"},
      {"apply", SOURCE_DIR "/examples/localsettings.ini"},
      {"check", SOURCE_DIR "/examples/localsettings.ini"},
      {"describe", "IKE.IKE_PORT"},
      {"diff"},
      {"get", "IKE"},
      {"history"},
      {"list"},
      {"reset", "IKE"},
      {"revert", "IKE"},
      {"rollback", "12"},
      {"save"},
      {"set", "IKE.IKE_PORT=500"},
      {"show"},
      {"status"},
      {"user", "list"},
      {"user", "show", "anna"},
      {"user", "add", "anna"},
      {"user", "set", "anna", "PMP_TIMEOUT=20"},
      {"user", "rename", "anna", "berta"},
      {"user", "del", "anna"},
      {"watch"},
  };
  for (std::vector<std::string> arguments : verbs) {
    arguments.insert(arguments.begin(), {"--socket", "/nonexistent"});
    arguments.push_back("--json");
    const Outcome outcome = runClient(arguments);
    EXPECT_THAT(outcome.exitCode, testing::AnyOf(0, 69)) << arguments[2] << ": " << outcome.err;
  }
}

TEST(ClientCommandLine, WrongUsageIsOneLine) {
  const struct {
    std::vector<std::string> arguments;
    const char* message;
  } ROWS[] = {
      {{}, "A subcommand is required"},
      {{"frobnicate"}, "there is no command frobnicate"},
      {{"shwo", "IKE"}, "there is no command shwo; did you mean show?"},
      {{"a\nb"}, "there is no command a\\x0ab"},
      {{"user"}, "A subcommand is required"},
      {{"get"}, "GROUP.NAME is required"},
      {{"set", "IKE.IKE_PORT=1", "--message", "why"}, "--message requires --save"},
      {{"rollback"}, "REVISION is required"},
      {{"rollback", "one"}, "REVISION: Value one not in range 1 to 9223372036854775807"},
      {{"set"}, "GROUP.NAME=VALUE is required"},
      {{"show", "--frobnicate"}, "The following argument was not expected: --frobnicate"},
      {{"show", "a\nb", "c\nd"}, "The following argument was not expected: c\\x0ad"},
      {{"show", "A.B", "C.D=1"}, "The following argument was not expected: C.D"},
      {{"status", "--json", "--metrics"}, "--metrics excludes --json"},
      {{"save", "--timeout", "0"}, "--timeout: Value 0 not in range 1 to 86400"},
      {{"diff", "--revision", "0"}, "--revision: Value 0 not in range 1 to 9223372036854775807"},
      {{"rollback", "-1"}, "REVISION: Value -1 not in range 1 to 9223372036854775807"},
  };
  for (const auto& row : ROWS) {
    EXPECT_EQ(runClient(row.arguments),
              failed(64, std::string(row.message) + " (see lparamsctl --help)"));
  }
}

TEST(ClientCommandLine, MisplacedSecretIsNotShown) {
  const std::vector<std::string> commandLines[] = {
      {"IKE.QCD_SECRET=s3cret"},
      {"show", "IKE", "IKE.QCD_SECRET=s3cret"},
      {"set", "IKE.IKE_PORT=1", "--IKE.QCD_SECRET=s3cret"},
      {"set", "IKE.QCD_SECRET", "s3cret"},
  };
  for (const std::vector<std::string>& arguments : commandLines) {
    const Outcome outcome = runClient(arguments);
    EXPECT_EQ(outcome.exitCode, 64);
    EXPECT_THAT(outcome.err, Not(HasSubstr("s3cret")));
  }
}

}  // namespace
}  // namespace client_testing
