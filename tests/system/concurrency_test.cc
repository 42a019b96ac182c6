// Many clients that read, change and save at the same time. The thread sanitizer's build of the
// agent ends with an error if it has seen a race.
#include <gtest/gtest.h>

#include <atomic>
#include <exception>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/records.h"
#include "tests/system/system_test.h"

using LPARAMS::Server::ParamGroup;

namespace system_testing {
namespace {

constexpr int CLIENTS = 8;
constexpr unsigned ROUNDS = 25;

void read(const BridgeClient& client, ParamGroup& group) {
  testing_support::decodeRecord(group, client.read(group.name).output);
}

bool write(const BridgeClient& client, ParamGroup& group) {
  return client.call({SETTINGS_MODULE, WRITE_GROUP, testing_support::encodeRecord(group)}).result ==
         1;
}

/// One client's work. Counts what fails and what no order of whole commands explains.
void work(const BridgeClient& client, unsigned number, std::atomic<int>& faults) {
  testing_support::Settings settings;
  for (unsigned round = 0; round < ROUNDS; ++round) {
    for (ParamGroup* group : settings.groups()) read(client, *group);
    // Every write sets both to the same, so every read finds them so.
    const std::string expiry = std::to_string(settings.adminGroup.SESSION_EXPTIME.value);
    const std::string& name = settings.adminGroup.ADMIN_GROUP.value;
    if (name != "admin" && name != expiry) ++faults;

    settings.adminGroup.SESSION_EXPTIME.value = number * ROUNDS + round;
    settings.adminGroup.ADMIN_GROUP.value = std::to_string(number * ROUNDS + round);
    if (!write(client, settings.adminGroup)) ++faults;

    settings.userList.destroyEntries();
    for (unsigned i = 0; i < number; ++i) {
      LPARAMS::Server::listAdd(settings.userList)->NAME.value = std::to_string(number);
    }
    if (!write(client, settings.userList)) ++faults;
    read(client, settings.userList);
    for (const auto* user : settings.userList.items) {
      if (user->NAME.value != std::to_string(settings.userList.items.size())) ++faults;
    }
    if (client.save().result != 1) ++faults;
  }
}

TEST_F(SystemTest, ServesClientsThatReadWriteAndSaveSideBySide) {
  start();
  std::atomic<int> faults = 0;
  {
    std::vector<std::jthread> clients;
    for (unsigned number = 0; number < CLIENTS; ++number) {
      clients.emplace_back([&, number] {
        try {
          work(connect(), number, faults);
        } catch (const std::exception&) {
          ++faults;  // the agent is gone, or says what nobody understands
        }
      });
    }
  }
  EXPECT_EQ(faults, 0);

  const BridgeClient client = connect();
  EXPECT_EQ(client.save().result, 1);
  const std::string admin = client.read("ADMIN").output;
  const std::string users = client.read("USERS").output;
  stop();
  EXPECT_EQ(agent->log().find("Sanitizer"), std::string::npos) << agent->log();

  start();
  EXPECT_EQ(connect().read("ADMIN").output, admin);
  EXPECT_EQ(connect().read("USERS").output, users);
}

}  // namespace
}  // namespace system_testing
