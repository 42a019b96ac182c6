// Many sessions, and sessions that do not do their part.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "agent/bridge/limits.h"
#include "lparams/catalogue/policy_group.h"
#include "tests/support/param_forms.h"
#include "tests/system/system_test.h"

namespace system_testing {
namespace {

constexpr size_t MAX_SESSIONS = agent::SESSION_LIMITS.all;
constexpr size_t LARGE = 4 * 1024 * 1024;  // bytes, more than any socket holds

class Sessions : public SystemTest {
 protected:
  void SetUp() override {
    flags.emplace_back("--accept-any");  // for a text of any size
    start();
  }

  /// Makes every reply to a read of POLICY larger than a socket holds.
  void makePolicyLarge() const {
    LPARAMS::Server::POLICY_t policy;
    policy.PMP_SERVERS.value = std::string(LARGE, 's');
    EXPECT_EQ(connect().write("POLICY", testing_support::wireBytes(policy)).result, 1);
  }

  /// A session whose client asks for more than it takes.
  BridgeClient stuckReader() const {
    BridgeClient client = connect();
    const std::string frame =
        bridge::encode(bridge::Command{SETTINGS_MODULE, READ_GROUP, groupInput("POLICY")});
    client.send(frame + frame);
    return client;
  }
};

TEST_F(Sessions, AreServedSideBySide) {
  std::vector<BridgeClient> clients;
  for (int i = 0; i < 100; ++i) clients.push_back(connect());
  const std::string frame =
      bridge::encode(bridge::Command{SETTINGS_MODULE, READ_GROUP, groupInput("IKE")});
  for (const BridgeClient& client : clients) client.send(frame);
  const bridge::Reply expected = connect().read("IKE");
  for (const BridgeClient& client : clients) {
    EXPECT_EQ(client.receiveReply().output, expected.output);
  }
}

TEST_F(Sessions, AreLimitedInNumber) {
  std::vector<BridgeClient> clients;
  for (size_t i = 0; i < MAX_SESSIONS; ++i) clients.push_back(connect());
  EXPECT_FALSE(BridgeClient(socketPath).greet()) << "one too many";
  EXPECT_NE(lineWith(agent->logLines(), {"turned away", "sessions=256"}), "");
  EXPECT_EQ(clients.front().read("ADMIN").result, 1);
  EXPECT_EQ(clients.back().read("ADMIN").result, 1);

  clients.pop_back();
  // The agent notices the end of a session in its own time.
  while (!BridgeClient(socketPath).greet()) continue;
}

TEST_F(Sessions, ThatStopHalfWayHoldUpNobody) {
  makePolicyLarge();
  std::vector<BridgeClient> clients;
  for (int i = 0; i < 8; ++i) {  // more than the agent has threads
    clients.emplace_back(socketPath).send("LPB");
    clients.push_back(connect());
    clients.back().send(std::string("\x20\0\0\0half", 8));
    clients.push_back(stuckReader());
  }
  const BridgeClient client = connect();
  for (int i = 0; i < 10; ++i) EXPECT_EQ(client.read("ADMIN").result, 1);
}

TEST_F(Sessions, ThatTheAgentCannotWaitForAreClosedAndTold) {
  makePolicyLarge();
  const BridgeClient other = connect();
  const BridgeClient reader = connect();
  agent->limitDescriptors(3);
  reader.send(bridge::encode(bridge::Command{SETTINGS_MODULE, READ_GROUP, groupInput("POLICY")}));
  EXPECT_TRUE(agent->waitForLog("its client cannot be waited for"));
  EXPECT_NE(lineWith(agent->logLines(), {"reason=", "Too many open files"}), "");
  EXPECT_LT(reader.receive(2 * LARGE).size(), LARGE);
  EXPECT_EQ(other.read("ADMIN").result, 1);
  agent->limitDescriptors(1000);
  EXPECT_EQ(connect().read("ADMIN").result, 1);
}

TEST_F(Sessions, AreTakenAgainAfterAWantOfDescriptors) {
  agent->limitDescriptors(3);
  const BridgeClient waiting(socketPath);
  EXPECT_TRUE(agent->waitForLog("a client could not be taken"));
  EXPECT_NE(lineWith(agent->logLines(), {"could not be taken", "Too many open files"}), "");
  agent->limitDescriptors(1000);
  EXPECT_TRUE(waiting.greet());
  EXPECT_EQ(connect().read("ADMIN").result, 1);
}

// Takes as long as the agent's client time-out, 20 s and up to 5 more.
TEST_F(Sessions, ThatStopHalfWayAreEndedAndIdleOnesAreNot) {
  makePolicyLarge();
  const BridgeClient idle = connect();
  const BridgeClient silent(socketPath);
  const BridgeClient halfHello(socketPath);
  halfHello.send("LPB");
  const BridgeClient halfFrame = connect();
  halfFrame.send(std::string("\x20\0\0\0half", 8));
  const BridgeClient reader = stuckReader();

  EXPECT_TRUE(silent.isClosed());
  EXPECT_TRUE(halfHello.isClosed());
  EXPECT_TRUE(halfFrame.isClosed());
  EXPECT_TRUE(agent->waitForLog("does not go on with what it has begun"));
  EXPECT_EQ(idle.read("ADMIN").result, 1);
  stop();  // waits for no reader that takes nothing
  EXPECT_LT(reader.receive(2 * LARGE).size(), 2 * LARGE);
}

}  // namespace
}  // namespace system_testing
