// A secret stays in the settings: it occurs in no log, event, state or error.
#include <chrono>
#include <stop_token>
#include <thread>

#include "bridge/protocol.h"
#include "tests/support/records.h"
#include "tests/system/safety/agent_test.h"

namespace safety {
namespace {

using agent_testing::exampleSettings;
using agent_testing::RawClient;
using testing::HasSubstr;
using testing::Not;

const std::string SECRET = "open sesame";
const std::string SECRET_LINE = "QCD_SECRET=" + SECRET + "\n";

std::string settingsWithSecret() {
  std::string text = exampleSettings();
  const size_t at = text.find("QCD_SECRET=");
  return text.replace(at, text.find('\n', at) + 1 - at, SECRET_LINE);
}

class Secrets : public AgentTest {
 protected:
  /// Sends IKE with the secret, after `spoil`, and returns what comes back.
  template <typename Spoil>
  std::string replyTo(Spoil spoil) {
    const RawClient client(socket_);
    (void)client.greet();
    testing_support::Settings settings;
    settings.ikeGroup.QCD_SECRET.value = SECRET;
    bridge::Command command{13, 0};
    spoil(settings.ikeGroup, command);
    const std::string extra = command.input;
    command.input = testing_support::encodeRecord(settings.ikeGroup) + extra;
    const bridge::Reply reply = client.exchange(command);
    EXPECT_EQ(reply.result, 0);
    return reply.text + reply.output;
  }

  /// Nothing says when the other one has subscribed.
  void changeUntilSeen(Process& watch) {
    const RawClient writer(socket_);
    ASSERT_TRUE(writer.greet());
    const std::jthread writing([&](const std::stop_token& stop) {
      testing_support::Settings settings;
      int count = 0;
      while (!stop.stop_requested()) {
        settings.ikeGroup.QCD_SECRET.value = SECRET + std::to_string(++count);
        (void)writer.exchange(
            bridge::Command{13, 0, testing_support::encodeRecord(settings.ikeGroup)});
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
      }
    });
    EXPECT_TRUE(watch.waitFor("Z IKE.QCD_SECRET: (hidden) -> (hidden)   ("));
  }

  void expectNoSecretInTheLog() {
    EXPECT_EQ(stop(), 0);
    EXPECT_THAT(log(), Not(HasSubstr("sesame")));
  }
};

TEST_F(Secrets, AreNotInErrorsEventsAndTheState) {
  state_.write(SETTINGS, settingsWithSecret());
  start();
  Process watch({PRODUCTS_DIR "/lparamsctl", "--socket", socket_, "watch"});

  using LPARAMS::Server::IKE_t;
  const std::string replies = replyTo([](IKE_t& ike, auto&) { ike.QCD_SECRET.value += "\n"; }) +
                              replyTo([](IKE_t& ike, auto&) { ike.EXCHANGE_TIMEOUT.value = 1; }) +
                              replyTo([](IKE_t&, auto& command) { command.input = SECRET; }) +
                              replyTo([](IKE_t&, auto& command) { command.revision = 99; });
  EXPECT_THAT(replies, Not(HasSubstr("sesame")));

  changeUntilSeen(watch);
  state_.write(SETTINGS, "edited " + SECRET);
  for (const Arguments& command :
       {Arguments{"save"}, {"show"}, {"status"}, {"set", "IKE.QCD_SECRET=" + SECRET + "\n"}}) {
    EXPECT_THAT(ctl(command).output, Not(HasSubstr("sesame")));
  }
  EXPECT_THAT(watch.output(), Not(HasSubstr("sesame")));
  expectNoSecretInTheLog();
}

TEST_F(Secrets, ThatLostTheirSignAreNotShownAsNames) {
  start();
  Process watch({PRODUCTS_DIR "/lparamsctl", "--socket", socket_, "watch"});
  changeUntilSeen(watch);
  const std::string line = "IKE.QCD_SECRET " + SECRET + "=x";
  state_.write("document", line + "\n");
  for (const Arguments& command : {Arguments{"set", line},
                                   {"set", "IKE.QCD_SECRET:" + SECRET + "=x"},
                                   {"set", "USERS[" + SECRET + "=x"},
                                   {"set", "USERS[bob] " + SECRET + "=x"},
                                   {"get", "IKE.QCD_SECRET " + SECRET},
                                   {"apply", state_.path + "/document"}}) {
    const Outcome outcome = ctl(command);
    EXPECT_NE(outcome.exitCode, 0) << command.back();
    EXPECT_THAT(outcome.output, Not(HasSubstr("sesame")));
  }
  EXPECT_TRUE(watch.waitFor("bytes, not shown): no such parameter"));
  EXPECT_THAT(watch.output(), Not(HasSubstr("sesame")));
  expectNoSecretInTheLog();
  EXPECT_THAT(log(), HasSubstr("bytes, not shown): no such parameter"));
}

TEST_F(Secrets, OfADamagedFileAreNotReported) {
  // Each spoils the file at the secret or around it.
  const std::pair<std::string, std::string> edits[] = {
      {"IPSEC_LIFETIME_JITTER=1\n", "IPSEC_LIFETIME_JITTER=\n"},  // takes the line of the secret
      {"IPSEC_LIFETIME_JITTER=1\n", "IPSEC_LIFETIME_JITTER=maybe\n"},
      {"IPSEC_LIFETIME_JITTER=1\n", "IPSEC_LIFETIME_JITTER\n"},
      {"QCD_SECRET", "QCD_SECRETS"},
      {SECRET_LINE, "QCD_SECRET " + SECRET + "\n"},
      {SECRET_LINE, "QCD_SECRET: " + SECRET + "\n"},
      {SECRET_LINE, "QCD_SECRET=a\n" + SECRET + "\n"},
      {"QCD_SECRET", "/QCD_SECRETS"},  // the name of no value, and so a block
      {"        /USER=", "        QCD_SECRET=" + SECRET + "\n        /USER="},
  };
  for (const auto& [from, to] : edits) {
    std::string text = settingsWithSecret();
    text.replace(text.find(from), from.size(), to);
    state_.write(SETTINGS, text);
    state_.write(SHADOW_COPY, settingsWithSecret());
    start();
    EXPECT_THAT(log(), HasSubstr("warning: ")) << to;
    expectNoSecretInTheLog();
  }
}

}  // namespace
}  // namespace safety
