// A client that is neither root nor the agent's own user.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "tests/module/child_process.h"
#include "tests/support/another_user.h"
#include "tests/system/system_test.h"

using bridge::Reason;

namespace system_testing {
namespace {

TEST_F(SystemTest, AnotherUserMayReadButNeitherWriteNorSave) {
  if (const auto reason = testing_support::whyNoOtherUser(); !reason.empty()) {
    GTEST_SKIP() << reason;
  }
  start({{"--admin-group", "no-such-group"}});
  ASSERT_EQ(chmod(directory.path.c_str(), 0755), 0);
  ASSERT_EQ(chmod(socketPath.c_str(), 0666), 0);
  const std::string before = connect().read("ADMIN").output;

  host::runInChild([&] {
    testing_support::dropRights();
    const BridgeClient client = connect();
    EXPECT_EQ(client.read("ADMIN").output, before);

    const bridge::Reply written = client.write("ADMIN", std::string(13, '\x01'));
    EXPECT_EQ(written.result, 0);
    EXPECT_EQ(written.reason, Reason::NotAuthorised);
    EXPECT_EQ(written.text,
              "user 54321 may not use module 13 at level 0; the agent's user, root and the members "
              "of the group \"no-such-group\" may");

    const bridge::Reply saved = client.save();
    EXPECT_EQ(saved.result, 0);
    EXPECT_EQ(saved.reason, Reason::NotAuthorised);
    EXPECT_EQ(saved.text,
              "user 54321 may not use module 13 at level 2; the agent's user, root and the members "
              "of the group \"no-such-group\" may");

    // A refusal comes before any look at the input, and is of one command only.
    EXPECT_EQ(client.call({SETTINGS_MODULE, WRITE_GROUP, "x"}).reason, Reason::NotAuthorised);
    EXPECT_EQ(client.call({SETTINGS_MODULE, 5, {}}).reason, Reason::ModuleRefused);
    EXPECT_EQ(client.read("IKE").result, 1);
  });
  EXPECT_EQ(connect().read("ADMIN").output, before);
}

TEST_F(SystemTest, SocketIsForTheAgentsUserAndGroupOnly) {
  start();
  EXPECT_EQ(host::modeOf(socketPath), 0660U);
}

}  // namespace
}  // namespace system_testing
