// "lparamsctl watch" and "status", with a real agent.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <cstdio>
#include <functional>
#include <future>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "tests/system/system_test.h"

using client_testing::Outcome;
using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;

namespace system_testing {
namespace {

class WatchVerb : public SystemTest {
 protected:
  json status() const { return json::parse(ctl({"status", "--json"}).out); }

  /// Runs the client while it watches, until the agent ends.
  Outcome watch(std::vector<std::string> arguments, const std::function<void()>& meanwhile) {
    arguments.insert(arguments.begin(), "watch");
    auto outcome = std::async(std::launch::async, [&] { return ctl(arguments); });
    while (status()["watchers"] != 1) continue;
    meanwhile();
    stop();
    return outcome.get();
  }

  /// The lines without the time and who it was, which have to be those of a client of this test or
  /// of the agent.
  static std::vector<std::string> wordsOf(const std::string& out) {
    static const std::regex LINE(
        "20[0-9-]{8}T[0-9:]{8}\\.[0-9]{3}Z (.*)   \\((lparamsctl|lparams_agent), uid " +
        std::to_string(::geteuid()) + ", pid [0-9]+\\)");
    std::vector<std::string> words;
    std::istringstream lines(out);
    std::smatch found;
    for (std::string line; std::getline(lines, line);) {
      words.push_back(std::regex_match(line, found, LINE) ? found[1].str() : "not so: " + line);
    }
    return words;
  }

  void run(std::vector<std::string> arguments, int exitCode = 0) const {
    EXPECT_EQ(ctl(std::move(arguments)).exitCode, exitCode);
  }
};

TEST_F(WatchVerb, PrintsWhatHappensToItsEnd) {
  start();
  const Outcome outcome = watch({}, [&] {
    run({"set", "IKE.EXCHANGE_TIMEOUT=120", "LOG.WALL_ON=0", "IKE.QCD_SECRET=sesame"});
    run({"user", "add", "b]o\xC3\xB6", "PMP_TIMEOUT=20"});
    run({"save"});
    run({"set", "IKE.EXCHANGE_TIMEOUT=1"}, 65);
    run({"user", "del", "b]o\xC3\xB6"});
    host::writeFile(settingsPath, "edited");
    run({"save"}, 74);
  });
  EXPECT_THAT(
      wordsOf(outcome.out),
      ElementsAre("IKE.EXCHANGE_TIMEOUT: 60 -> 120", "IKE.QCD_SECRET: (hidden) -> (hidden)",
                  "LOG.WALL_ON: 1 -> 0", "USERS[b]o\xC3\xB6]: added",
                  "USERS[b]o\xC3\xB6].PMP_TIMEOUT: - -> 20", "saved",
                  "refused: IKE.EXCHANGE_TIMEOUT: \"1\" is not a whole number from 5 to 600",
                  "USERS[b]o\xC3\xB6]: removed", HasSubstr("not saved: " + settingsPath),
                  "the agent ends"));
  EXPECT_EQ(outcome.err, "lparamsctl: the agent has ended\n");
  EXPECT_EQ(outcome.exitCode, 69);
  EXPECT_THAT(outcome.out, testing::Not(HasSubstr("sesame")));
}

TEST_F(WatchVerb, PrintsOnlyWhatTheGlobAsksFor) {
  start();
  const Outcome outcome = watch({"*timeout"}, [&] {
    run({"set", "IKE.EXCHANGE_TIMEOUT=120", "LOG.WALL_ON=0", "POLICY.PMP_TIMEOUT=30"});
    run({"save"});
  });
  EXPECT_THAT(wordsOf(outcome.out),
              ElementsAre("IKE.EXCHANGE_TIMEOUT: 60 -> 120", "POLICY.PMP_TIMEOUT: 10 -> 30"));
  EXPECT_EQ(outcome.exitCode, 69);
}

TEST_F(WatchVerb, PrintsJsonLines) {
  start();
  const Outcome outcome = watch({"--json"}, [&] { run({"set", "IKE.EXCHANGE_TIMEOUT=120"}); });
  std::istringstream lines(outcome.out);
  std::string line;
  ASSERT_TRUE(std::getline(lines, line));
  const json change = json::parse(line);
  EXPECT_EQ(change["what"], "changed");
  EXPECT_EQ(change["name"], "IKE.EXCHANGE_TIMEOUT");
  EXPECT_EQ(change["before"], 60);
  EXPECT_EQ(change["after"], 120);
  EXPECT_EQ(change["program"], "lparamsctl");
  EXPECT_EQ(change["uid"], ::geteuid());
  ASSERT_TRUE(std::getline(lines, line));
  EXPECT_EQ(json::parse(line)["what"], "end");
  EXPECT_FALSE(std::getline(lines, line));
}

TEST_F(WatchVerb, EndsWhenNobodyReadsItsOutput) {
  start();
  const std::string command =
      PRODUCTS_DIR "/lparamsctl --socket " + socketPath + " watch 2>/dev/null";
  FILE* const output = ::popen(command.c_str(), "re");
  ASSERT_NE(output, nullptr);
  while (status()["watchers"] != 1) continue;
  const int ended = ::pclose(output);  // closes it, and waits for the end
  EXPECT_EQ(WEXITSTATUS(ended), 74);
  while (status()["watchers"] != 0) continue;
}

TEST_F(WatchVerb, StatusPrintsMetrics) {
  start();
  run({"set", "LOG.WALL_ON=0"});
  const json state = status();
  const std::string metrics = ctl({"status", "--metrics"}).out;
  EXPECT_THAT(metrics, HasSubstr("\nlparams_up 1\n"));
  EXPECT_THAT(metrics, HasSubstr("\nlparams_unsaved_changes 1\n"));
  EXPECT_THAT(metrics, HasSubstr("\nlparams_writes_total 1\n"));
  EXPECT_THAT(metrics, HasSubstr("saved_hash=" + state["savedHash"].dump() +
                                 ",running_hash=" + state["runningHash"].dump() + "} 1\n"));
  EXPECT_THAT(metrics, HasSubstr("catalogue=" + state["catalogue"].dump()));
  EXPECT_THAT(metrics, testing::Not(HasSubstr(state["runningHashWithSecrets"].get<std::string>())));
}

}  // namespace
}  // namespace system_testing
