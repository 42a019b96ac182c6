#include "agent/base/own_user.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <unistd.h>

#include "tests/module/child_process.h"
#include "tests/support/user_namespace.h"

namespace agent {
namespace {

TEST(OwnUser, MapsThatHaveANumberForEveryUser) {
  const struct {
    const char* map;
    bool all;
  } rows[] = {
      {"         0          0 4294967295\n", true},
      {"0 0 1\n1 100000 4294967294\n", true},
      {"         0     100000      65536\n", false},
      {"0 0 1\n", false},
      {"", false},
      {"nonsense\n", false},
  };
  for (const auto& row : rows) EXPECT_EQ(coversAll(row.map), row.all) << row.map;
}

// A process asks once about its namespace: each test is a process.

TEST(OwnUser, IsTheOneThatRunsTheProcess) {
  host::runInChild([] {
    EXPECT_EQ(isOwnUser(::geteuid()), isKnownUser(::geteuid()));
    EXPECT_FALSE(isOwnUser(::geteuid() + 1));
    EXPECT_TRUE(isKnownUser(0));
    EXPECT_TRUE(isKnownGroup(0));
  });
}

using OwnUserInUserNamespace = testing_support::InUserNamespace<testing::Test>;
INSTANTIATE_IN_USER_NAMESPACE(OwnUserInUserNamespace);

TEST_P(OwnUserInUserNamespace, IsNotTheOneWithoutANumber) {
  host::runInChild([] {
    ASSERT_EQ(::unshare(CLONE_NEWUSER), 0);
    // Without a map nobody has a number.
    EXPECT_FALSE(isKnownUser(::geteuid()));
    EXPECT_FALSE(isOwnUser(::geteuid()));
    EXPECT_FALSE(isKnownGroup(::getegid()));
    EXPECT_TRUE(isKnownUser(0));
  });
}

}  // namespace
}  // namespace agent
