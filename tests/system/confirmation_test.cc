// Changes that go back unless they are confirmed, with an agent that is killed and stopped.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>

#include "bridge/apply.h"
#include "bridge/named_values.h"
#include "tests/system/system_test.h"

namespace system_testing {
namespace {

using bridge::Change;
using testing::HasSubstr;

constexpr const char* NOTHING_WAITS = "\"pendingConfirmation\":null";

class ConfirmationOfAgent : public SystemTest {
 protected:
  static std::string request(uint32_t seconds, const std::string& port) {
    return bridge::encode(bridge::ApplyRequest{
        .confirmSeconds = seconds,
        .save = true,
        .changes = {{}, {{Change::Set, "IKE.IKE_PORT", port}, {Change::AddUser, "eve"}}}});
  }

  void apply(uint32_t seconds, const std::string& port) const {
    const auto reply = connect().call("apply", request(seconds, port));
    ASSERT_EQ(reply.result, 1) << reply.text;
  }

  void kill() {
    agent->signal(SIGKILL);
    (void)agent->exitStatus();
  }

  void waitUntilNothingWaits() const {
    while (connect().state().find(NOTHING_WAITS) == std::string::npos) {
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
  }

  /// The port and the number of users, as they are served.
  std::string values() const {
    const auto reply =
        connect().call("get", bridge::encode(bridge::Names{"IKE.IKE_PORT", "USERS"}));
    const auto values = bridge::decodeNamedValues(reply.output).value_or(bridge::NamedValues());
    std::string text;
    for (const auto& value : values.values) {
      if (value.name.ends_with("PORT") || value.name.ends_with(".NAME")) {
        text += value.running.value_or("-") + "\n";
      }
    }
    return text;
  }
};

TEST_F(ConfirmationOfAgent, IsLeftToTheNextStartByAStop) {
  start();
  apply(3600, "501");
  EXPECT_THAT(connect().state(), HasSubstr("\"pendingConfirmation\":\"2"));
  stop(SIGTERM);
  EXPECT_THAT(host::readFile(settingsPath), HasSubstr("IKE_PORT=501\n"));
  start();
  EXPECT_EQ(values(), "501\neve\n");
  EXPECT_THAT(connect().state(), HasSubstr("\"pendingConfirmation\":\"2"));
  EXPECT_EQ(connect().call("confirm", {}).result, 1);
  EXPECT_THAT(connect().state(), HasSubstr(NOTHING_WAITS));
  stop(SIGTERM);
  start();
  EXPECT_EQ(values(), "501\neve\n");
}

TEST_F(ConfirmationOfAgent, OfAnAgentThatWasKilledComesWithTheNextOne) {
  start();
  apply(1, "501");
  kill();
  std::this_thread::sleep_for(std::chrono::milliseconds(1100));  // its time is over then
  start();
  EXPECT_EQ(values(), "500\n") << "before anybody was served";
  EXPECT_THAT(connect().state(), HasSubstr(NOTHING_WAITS));
  EXPECT_THAT(host::readFile(settingsPath), HasSubstr("IKE_PORT=500\n"));
}

/// While it writes, saves, waits and goes back.
TEST_F(ConfirmationOfAgent, NeverLacksWhenTheAgentIsKilledAtAnyMoment) {
  std::mt19937 random(std::random_device{}());
  for (int round = 0; round < 6; ++round) {
    start();
    const bool whileItGoesBack = round % 2 == 1;
    std::uniform_int_distribution<int> moment(0, 20'000);  // microseconds
    const std::chrono::microseconds pause(moment(random) + (whileItGoesBack ? 995'000 : 0));
    {
      const BridgeClient client = connect();
      client.send(bridge::encode(bridge::AgentCommand{"apply", request(1, "501")}));
      std::this_thread::sleep_for(pause);
      kill();
    }
    start();
    waitUntilNothingWaits();
    EXPECT_EQ(values(), "500\n") << pause.count();
    stop(SIGTERM);
    const std::string text = host::readFile(settingsPath);
    EXPECT_THAT(text, HasSubstr("IKE_PORT=500\n")) << pause.count();
    EXPECT_EQ(text.find("eve"), std::string::npos) << pause.count();
  }
}

}  // namespace
}  // namespace system_testing
