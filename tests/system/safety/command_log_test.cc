// Each write, save and refusal is one line of the log.
#include <sys/prctl.h>

#include <algorithm>
#include <array>

#include "agent/base/exit_status.h"
#include "bridge/protocol.h"
#include "tests/support/another_user.h"
#include "tests/support/records.h"
#include "tests/system/safety/agent_test.h"

namespace safety {
namespace {

using agent_testing::RawClient;
using testing::AllOf;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

class CommandLog : public AgentTest {
 protected:
  /// The lines of the log with this text, joined.
  std::string linesWith(const std::string& text) {
    std::string lines;
    for (size_t at = 0, end = 0; at < log().size(); at = end + 1) {
      end = std::min(log().find('\n', at), log().size());
      const std::string line = log().substr(at, end - at);
      if (line.find(text) != std::string::npos) lines += line + "\n";
    }
    return lines;
  }

  /// By this process, of lparamsctl.
  static std::string by(const std::string& program) {
    return " uid=" + std::to_string(::geteuid()) + " pid=[0-9]+ program=" + program + "\n";
  }

  bridge::Reply exchange(const bridge::Command& command) {
    const RawClient client(socket_);
    EXPECT_TRUE(client.greet());
    return client.exchange(command);
  }
};

TEST_F(CommandLog, NamesWhoHasWrittenWhatAndSaved) {
  start();
  set("IKE.IKE_PORT=501");
  EXPECT_EQ(ctl({"set", "IKE.QCD_SECRET=sesame", "IKE.NATT_PORT=4501"}).exitCode, 0);
  EXPECT_EQ(ctl({"user", "add", "anna"}).exitCode, 0);
  save();
  EXPECT_EQ(ctl({"save", "--force"}).exitCode, 0);
  EXPECT_EQ(stop(), 0);
  EXPECT_THAT(
      linesWith("info: settings "),
      MatchesRegex("lparams_agent: info: settings loaded .*\n"
                   "lparams_agent: info: settings written group=IKE parameters=IKE_PORT "
                   "revision=[0-9]+" +
                   by("lparamsctl") +
                   "lparams_agent: info: settings written group=IKE "
                   "parameters=NATT_PORT,QCD_SECRET revision=[0-9]+" +
                   by("lparamsctl") +
                   "lparams_agent: info: settings written group=USERS parameters=.*anna.* "
                   "added.* revision=[0-9]+" +
                   by("lparamsctl") + "lparams_agent: info: settings saved" + by("lparamsctl") +
                   "lparams_agent: info: settings saved, forced" + by("lparamsctl")));
  EXPECT_THAT(log(), Not(HasSubstr("sesame")));
}

TEST_F(CommandLog, NamesWhatWasRefusedAndWhy) {
  start();
  testing_support::Settings settings;
  settings.ikeGroup.EXCHANGE_TIMEOUT.value = 1;
  (void)exchange({13, 0, testing_support::encodeRecord(settings.ikeGroup)});
  (void)exchange({14, 0, ""});
  (void)exchange({13, 1, "cut"});
  state_.write(SETTINGS, "edited");
  EXPECT_EQ(ctl({"save"}).exitCode, agent::EXIT_IO);
  EXPECT_EQ(stop(), 0);
  EXPECT_THAT(linesWith("a write was refused"),
              MatchesRegex("lparams_agent: notice: a write was refused "
                           "reason=\"IKE.EXCHANGE_TIMEOUT: 1 is not legal; expected a whole number "
                           "from 5 to 600\"" +
                           by("[^ ]+")));
  EXPECT_THAT(linesWith("a command was refused"),
              AllOf(HasSubstr("a command was refused reason=\"no module 14 is loaded\" uid="),
                    HasSubstr("a command was refused (1 more since the last line)\n")));
  EXPECT_THAT(linesWith("settings not saved"),
              AllOf(HasSubstr("error: settings not saved reason=\"" + state_.at(SETTINGS)),
                    HasSubstr(" program=lparamsctl\n")));
}

TEST_F(CommandLog, NamesWhoWasNotAuthorised) {
  if (const auto reason = testing_support::whyNoOtherUser(); !reason.empty()) {
    GTEST_SKIP() << reason;
  }
  start({"--admin-group", "no-such-group"});
  (void)::chmod(place_.at("run").c_str(), 0711);
  (void)::chmod(socket_.c_str(), 0666);
  testing_support::Settings settings;
  const std::string input = testing_support::encodeRecord(settings.adminGroup);
  EXPECT_EQ(asUser(testing_support::NOBODY, testing_support::NOBODY, {},
                   [&] {
                     return exchange({13, 0, input}).text.empty() ? "taken" : "refused";
                   }),
            "refused");
  EXPECT_EQ(stop(), 0);
  EXPECT_THAT(linesWith("warning: a command was not authorised reason=\"user 54321 may not use "),
              HasSubstr(" uid=54321 pid="));
}

TEST_F(CommandLog, IsNotFloodedByRefusals) {
  start();
  const RawClient client(socket_);
  ASSERT_TRUE(client.greet());
  constexpr int REFUSALS = 2000;
  for (int i = 0; i < REFUSALS; ++i) (void)client.exchange(bridge::Command{14, 0, ""});
  EXPECT_EQ(stop(), 0);
  long told = 0;
  long lines = 0;
  const std::string text = linesWith("a command was refused");
  for (size_t at = 0; at < text.size(); at = text.find('\n', at) + 1, ++lines) {
    const size_t count = text.find(" (", at);
    if (text.find(" reason=", at) < text.find('\n', at)) ++told;
    if (count < text.find('\n', at)) told += std::stol(text.substr(count + 2));
  }
  EXPECT_EQ(told, REFUSALS);
  EXPECT_LT(lines, REFUSALS / 10);
}

TEST_F(CommandLog, WritesAreNeverLeftOut) {
  start();
  const RawClient client(socket_);
  ASSERT_TRUE(client.greet());
  constexpr int WRITES = 100;
  testing_support::Settings settings;
  for (int i = 0; i < WRITES; ++i) {
    settings.adminGroup.SESSION_EXPTIME.value = 20U + static_cast<unsigned>(i);
    (void)client.exchange(
        bridge::Command{13, 0, testing_support::encodeRecord(settings.adminGroup)});
  }
  EXPECT_EQ(stop(), 0);
  const std::string lines = linesWith("settings written group=ADMIN parameters=SESSION_EXPTIME ");
  EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), WRITES);
}

TEST_F(CommandLog, ShowsTheProgramsNameWithoutItsControlCharacters) {
  start();
  std::array<char, 16> own{};
  ASSERT_EQ(::prctl(PR_GET_NAME, own.data()), 0);
  ASSERT_EQ(::prctl(PR_SET_NAME, "a\nb \x1B\x9B\xE2\x80\xAE=\""), 0);
  (void)exchange({14, 0, ""});
  ASSERT_EQ(::prctl(PR_SET_NAME, own.data()), 0);
  EXPECT_EQ(stop(), 0);
  EXPECT_THAT(linesWith("a command was refused"),
              HasSubstr(R"( program="a\x0ab \x1b\x9b\xe2\x80\xae=\"")"
                        "\n"));
}

TEST_F(CommandLog, TellsWhatAWriteThatBrokeOffHasChanged) {
  start({"--accept-any"});
  testing_support::Settings settings;
  settings.adminGroup.SESSION_EXPTIME.value = 77;
  std::string input = testing_support::encodeRecord(settings.adminGroup);
  input.pop_back();
  EXPECT_EQ(exchange({13, 0, input}).reason, bridge::Reason::MalformedInput);
  EXPECT_EQ(stop(), 0);
  EXPECT_THAT(linesWith("settings written in part"),
              HasSubstr("warning: settings written in part group=ADMIN parameters=SESSION_EXPTIME "
                        "revision="));
  EXPECT_EQ(linesWith("refused"), "");
}

}  // namespace
}  // namespace safety
