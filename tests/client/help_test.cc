// The command line itself.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/client/client_process.h"

namespace client_testing {
namespace {

using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

TEST(ClientCommandLine, VersionIsPrinted) {
  const Outcome outcome = runClient({"--version"});
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_THAT(outcome.out, MatchesRegex("lparamsctl [0-9.]+, bridge protocol [0-9]+\n"));
}

TEST(ClientCommandLine, EveryCommandHasHelp) {
  const std::vector<std::string> commands[] = {
      {},       {"show"},   {"get"},   {"describe"},    {"set"},        {"user"},
      {"save"}, {"status"}, {"watch"}, {"user", "add"}, {"user", "del"}};
  for (std::vector<std::string> arguments : commands) {
    arguments.emplace_back("--help");
    const Outcome outcome = runClient(arguments);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.out, HasSubstr("Usage: lparamsctl"));
    EXPECT_EQ(outcome.err, "");
  }
}

TEST(ClientCommandLine, ExamplesAreLegal) {
  // As they stand in the help texts; without an agent they get as far as the socket.
  const std::vector<std::string> examples[] = {
      {"show", "LOG"},
      {"show", "--secrets", "IKE"},
      {"get", "IKE.IKE_PORT"},
      {"get", "USERS[0].NAME"},
      {"set", "LOG.LOG_LEVEL=_LL_DETAILS", "IKE.NATT_PORT=4500"},
      {"set", "IKE.IKE_PORT=500", "IKE.PERSISTENT_SA=true"},
      {"set", "USERS[0].PMP_TIMEOUT=20"},
      {"user", "add", "anna"},
      {"user", "add", "anna", "PMP_AUTH=PMPAUTH_PSK", "PMP_PSK_NAME=office"},
      {"user", "del", "anna"},
      {"user", "del", "0"},
      {"save"},
      {"save", "--force"},
      {"status"},
      {"watch"},
  };
  for (std::vector<std::string> arguments : examples) {
    arguments.insert(arguments.begin(), {"--socket", "/nonexistent"});
    EXPECT_EQ(runClient(arguments),
              failed(3, "cannot reach the agent at /nonexistent: No such file or directory"));
  }
}

TEST(ClientCommandLine, WrongUsageIsOneLine) {
  const struct {
    std::vector<std::string> arguments;
    const char* message;
  } ROWS[] = {
      {{}, "A subcommand is required"},
      {{"frobnicate"}, "A subcommand is required"},
      {{"user"}, "A subcommand is required"},
      {{"get"}, "GROUP.NAME is required"},
      {{"set"}, "GROUP.NAME=VALUE is required"},
      {{"get", "A.B", "C.D"}, "The following argument was not expected: C.D"},
      {{"show", "--frobnicate"}, "The following argument was not expected: --frobnicate"},
      {{"show", "a\nb", "c\nd"}, "The following argument was not expected: c\\x0ad"},
      {{"get", "A.B", "C.D=1"}, "The following argument was not expected: C.D"},
      {{"save", "--timeout", "0"}, "--timeout: Value 0 not in range 1 to 86400"},
  };
  for (const auto& row : ROWS) {
    EXPECT_EQ(runClient(row.arguments),
              failed(2, std::string(row.message) + " (see lparamsctl --help)"));
  }
}

TEST(ClientCommandLine, MisplacedSecretIsNotShown) {
  const std::vector<std::string> commandLines[] = {
      {"IKE.QCD_SECRET=s3cret"},
      {"show", "IKE", "IKE.QCD_SECRET=s3cret"},
      {"set", "IKE.IKE_PORT=1", "--IKE.QCD_SECRET=s3cret"},
      {"set", "IKE.QCD_SECRET", "s3cret"},
      {"set", "IKE.QCD_SECERT=s3cret"},
  };
  for (const std::vector<std::string>& arguments : commandLines) {
    const Outcome outcome = runClient(arguments);
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.err, Not(HasSubstr("s3cret")));
  }
}

}  // namespace
}  // namespace client_testing
