// How the agent ends.
#include <gmock/gmock.h>

#include <csignal>
#include <cstring>
#include <string>
#include <system_error>
#include <vector>

#include "lparams/catalogue/policy_group.h"
#include "tests/support/held_sync.h"
#include "tests/support/param_forms.h"
#include "tests/system/system_test.h"

using testing::AllOf;
using testing::HasSubstr;

namespace system_testing {
namespace {

class Stop : public SystemTest, public testing::WithParamInterface<int> {
 protected:
  void SetUp() override { start(); }
};

INSTANTIATE_TEST_SUITE_P(By, Stop, testing::Values(SIGTERM, SIGINT, SIGHUP),
                         [](const auto& signal) -> std::string {
                           return ::sigabbrev_np(signal.param);
                         });

TEST_P(Stop, WithoutClients) {
  stop(GetParam());
  EXPECT_THAT(agent->log(), AllOf(HasSubstr("info: stopping signal=" + std::to_string(GetParam())),
                                  HasSubstr("info: stopped\n")));
}

TEST_P(Stop, EndsSessionsWhateverTheirClientsAreAbout) {
  std::vector<BridgeClient> clients;
  clients.emplace_back(socketPath);  // says nothing
  clients.emplace_back(socketPath).send("LPB");
  clients.push_back(connect());  // idle
  clients.push_back(connect());
  EXPECT_EQ(clients.back().read("ADMIN").result, 1);  // idle again
  clients.push_back(connect());
  clients.back().send(std::string("\x20\0", 2));
  clients.push_back(connect());
  clients.back().send(std::string("\x20\0\0\0half", 8));

  agent->signal(GetParam());
  for (const BridgeClient& client : clients) EXPECT_TRUE(client.isClosed());
  EXPECT_EQ(agent->exitStatus(), 0);
  EXPECT_FALSE(host::exists(socketPath));
}

TEST_P(Stop, TakesNoMoreClientsAndWaitsForTheRunningCommand) {
  LPARAMS::Server::POLICY_t policy;
  policy.PMP_SERVERS.value = "changed";
  const BridgeClient idle = connect();
  const BridgeClient client = connect();
  EXPECT_EQ(client.write("POLICY", testing_support::wireBytes(policy)).result, 1);
  testing_support::HeldSync save(settingsPath + ".good.new");
  client.send(bridge::encode(bridge::Command{SETTINGS_MODULE, SAVE}) +
              bridge::encode(bridge::Command{SETTINGS_MODULE, READ_GROUP, groupInput("ADMIN")}));
  save.waitForBegin();

  agent->signal(GetParam());
  EXPECT_TRUE(idle.isClosed());
  EXPECT_THROW(while (true) BridgeClient another(socketPath), std::system_error);
  EXPECT_TRUE(agent->runs());
  save.letItEnd();
  EXPECT_EQ(client.receiveReply().result, 1) << "the command that was running is answered";
  EXPECT_TRUE(client.isClosed()) << "the next one is not begun";
  EXPECT_EQ(agent->exitStatus(), 0);
  EXPECT_FALSE(host::exists(socketPath));
}

}  // namespace
}  // namespace system_testing
