// Many clients that read, change and save at the same time. The thread sanitizer's build of the
// agent ends with an error if it has seen a race.
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "client/failure.h"
#include "client/settings.h"
#include "client/store.h"
#include "tests/system/system_test.h"

namespace system_testing {
namespace {

constexpr int CLIENTS = 8;
constexpr unsigned ROUNDS = 25;

/// Writes the group, unless another client has written it since it was read.
void writeIfUnchanged(client::Store& store, LPARAMS::Server::ParamGroup& group) {
  try {
    store.write(group);
  } catch (const client::Failure& failure) {
    if (std::string_view(failure.what()).find("has changed") == std::string_view::npos) throw;
  }
}

/// One client's work. Counts what it saw that no order of whole commands explains.
void work(client::Store store, unsigned number, std::atomic<int>& faults) {
  client::Settings settings;
  for (unsigned round = 0; round < ROUNDS; ++round) {
    for (auto* group : settings.groups) store.read(*group);
    // Every write sets both to the same, so every read finds them so.
    const std::string expiry = std::to_string(settings.admin.SESSION_EXPTIME.value);
    const std::string& name = settings.admin.ADMIN_GROUP.value;
    if (name != "admin" && name != expiry) ++faults;

    settings.admin.SESSION_EXPTIME.value = number * ROUNDS + round;
    settings.admin.ADMIN_GROUP.value = std::to_string(number * ROUNDS + round);
    writeIfUnchanged(store, settings.admin);

    settings.users.destroyEntries();
    for (unsigned i = 0; i < number; ++i) {
      LPARAMS::Server::listAdd(settings.users)->NAME.value = std::to_string(number);
    }
    writeIfUnchanged(store, settings.users);
    store.read(settings.users);
    for (const auto* user : settings.users.items) {
      if (user->NAME.value != std::to_string(settings.users.items.size())) ++faults;
    }
    store.save(false);
  }
}

TEST_F(SystemTest, ServesClientsThatReadWriteAndSaveSideBySide) {
  start();
  std::atomic<int> faults = 0;
  {
    std::vector<std::jthread> clients;
    for (unsigned number = 0; number < CLIENTS; ++number) {
      clients.emplace_back([&, number] {
        work(client::Store(socketPath, std::chrono::seconds(60)), number, faults);
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
