// Messages name things so that they can be found, and are whole.
#include <unistd.h>

#include <algorithm>

#include "agent/base/exit_status.h"
#include "client/failure.h"
#include "tests/system/safety/agent_test.h"

namespace safety {
namespace {

using agent_testing::exampleSettings;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

class Messages : public AgentTest {
 protected:
  /// Where the agent is started: its paths are given from here.
  Surroundings here(const std::vector<std::string>& environment = {}) const {
    return {.environment = environment, .inChild = [this] { (void)!::chdir(place_.path.c_str()); }};
  }

  Outcome runHere(Arguments arguments) const {
    arguments.insert(arguments.begin(), AGENT);
    return safety::run(arguments, here());
  }
};

TEST_F(Messages, NameAbsolutePathsWhereverTheAgentWasStarted) {
  (void)::mkdir(place_.at("state").c_str(), 0700);
  place_.write("state/localsettings.ini", settingsWithoutGroups());
  agent_.emplace(Arguments{AGENT, "--state-dir", "state/../state", "--socket", "run/agent.sock"},
                 here());
  ASSERT_TRUE(agent_->waitFor(" listening socket=" + socket_ + "\n")) << log();
  EXPECT_EQ(state("stateDir"), place_.at("state"));
  EXPECT_THAT(ctl({"save"}).output, HasSubstr(": saving failed: "));
  EXPECT_EQ(ctl({"save", "--force"}).exitCode, 0);
  EXPECT_EQ(stop(), 0);
  EXPECT_THAT(log(), HasSubstr("settings loaded state-dir=" + place_.at("state") + " "));
}

TEST_F(Messages, OfAStartThatFailsNameAbsolutePathsToo) {
  EXPECT_EQ(runHere({"--state-dir", "no/such"}),
            (Outcome{agent::EXIT_BAD_FILE, "lparams_agent: error: state directory " +
                                               place_.at("no/such") +
                                               " cannot be used: No such file or directory\n"}));
  (void)::mkdir(place_.at("state").c_str(), 0700);
  EXPECT_THAT(
      runHere({"--state-dir", "state", "--module", "./absent.so"}).output,
      HasSubstr("lparams_agent: error: module " + place_.at("absent.so") + " cannot be loaded: "));
  place_.write("file", "");
  (void)::chmod(place_.path.c_str(), 0700);
  EXPECT_THAT(runHere({"--state-dir", "state", "--socket", "./file"}).output,
              HasSubstr("lparams_agent: error: socket " + place_.at("file") +
                        " is in the way: it is not a socket\n"));
}

TEST_F(Messages, OfTheClientNameAnAbsolutePath) {
  EXPECT_EQ(safety::run({PRODUCTS_DIR "/lparamsctl", "--socket", "./absent", "status"}, here()),
            (Outcome{programs::EXIT_UNAVAILABLE, "lparamsctl: cannot reach the agent at " +
                                                     place_.at("absent") +
                                                     ": No such file or directory\n"}));
}

TEST_F(Messages, AreWholeHoweverLongTheirPathsAre) {
  std::string deep;
  for (const char c : {'a', 'b', 'c'}) {
    deep += (deep.empty() ? "" : "/") + std::string(200, c);
    ASSERT_EQ(::mkdir(place_.at(deep).c_str(), 0700), 0);
  }
  const std::string name = deep + "/" + SETTINGS;
  const std::string file = place_.at(name);
  const Arguments arguments = {AGENT, "--state-dir", place_.at(deep), "--socket", socket_};
  place_.write(name, "damaged");
  EXPECT_EQ(
      safety::run(arguments),
      (Outcome{agent::EXIT_BAD_FILE,
               "lparams_agent: error: no complete settings in " + place_.at(deep) + ": " + file +
                   " (it does not begin with /ROOT=); repair one, or start with "
                   "--allow-defaults\n"}));

  place_.write(name, exampleSettings());
  agent_.emplace(arguments);
  ASSERT_TRUE(agent_->waitFor(" listening ")) << log();
  place_.write(name, "edited");
  const std::string how = "; a forced save (lparamsctl save --force) replaces it";
  EXPECT_THAT(ctl({"save"}).output,
              AllOf(HasSubstr(": " + file + " was edited"), EndsWith(how + "\n")));
  EXPECT_THAT(state("lastFailure"), AllOf(StartsWith(file + " was edited"), EndsWith(how)));
  EXPECT_TRUE(logTells("edited while the agent was running file=" + file + " kept=" + file));
  EXPECT_TRUE(logTells("settings not saved reason=\"" + file + " was edited"));
  EXPECT_TRUE(logTells(how + "\" uid="));
}

TEST_F(Messages, HaveTheJournalsPriorityFromTheFirstOn) {
  EXPECT_THAT(runHere({"--no-such-option", "--journal"}).output,
              StartsWith("<3>lparams_agent: error: "));
  EXPECT_THAT(runHere({"--journal", "--state-dir", "absent"}).output,
              StartsWith("<3>lparams_agent: error: "));
}

TEST_F(Messages, OfAWrongCommandLineNameTheProgram) {
  const Arguments rows[] = {
      {"--max-users", "-1"},         {"--max-users=-1"},       {"--max-users", "-4294967291"},
      {"--max-users", "4294967300"}, {"--max-users", "1.5"},   {"--max-users", ""},
      {"--max-users", "1000001"},    {"--max-users", "many"},  {"--max-users"},
      {"--no-such-option"},          {"--state-dir"},          {"word"},
      {"--max-users", "1", "2"},     {"--save-on-exit=maybe"},
  };
  for (const Arguments& row : rows) {
    const Outcome outcome = runHere(row);
    EXPECT_EQ(outcome.exitCode, agent::EXIT_USAGE) << row.front();
    EXPECT_THAT(outcome.output, AllOf(StartsWith("lparams_agent: error: "),
                                      EndsWith(" (see lparams_agent --help)\n")));
    EXPECT_EQ(std::count(outcome.output.begin(), outcome.output.end(), '\n'), 1) << row.front();
  }
  for (const std::string timeout : {"-1", "0", "4294967297", "86401", "1.5", "soon"}) {
    const Outcome outcome = ctl({"--timeout", timeout, "status"});
    EXPECT_EQ(outcome.exitCode, programs::EXIT_USAGE) << timeout;
    EXPECT_THAT(outcome.output, AllOf(StartsWith("lparamsctl: --timeout: "),
                                      EndsWith(" (see lparamsctl --help)\n")));
  }
}

}  // namespace
}  // namespace safety
