#include "agent/base/quota.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <optional>

namespace agent {
namespace {

/// Neither root nor the user who runs the test.
uid_t other(uid_t number) { return ::geteuid() + 1000 + number; }

TEST(Quota, OneUserTakesAPart) {
  Quota quota({.all = 10, .others = 8, .oneUser = 5});
  EXPECT_FALSE(quota.take(other(1), 6));
  EXPECT_TRUE(quota.take(other(1), 4));
  EXPECT_FALSE(quota.take(other(1), 2));
  EXPECT_TRUE(quota.take(other(1), 1));
  EXPECT_TRUE(quota.take(other(2), 3));
  quota.giveBack(other(1), 5);
  EXPECT_TRUE(quota.take(other(1), 5));
}

TEST(Quota, SomeIsKeptForRootAndTheAgentsUser) {
  Quota quota({.all = 10, .others = 8, .oneUser = 5});
  EXPECT_TRUE(quota.take(other(1), 5));
  EXPECT_TRUE(quota.take(other(2), 3));
  EXPECT_FALSE(quota.take(other(3), 1));
  EXPECT_TRUE(quota.take(0, 1));
  EXPECT_TRUE(quota.take(::geteuid(), 1));
  EXPECT_FALSE(quota.take(0, 1)) << "it is used up";
  quota.giveBack(other(1), 1);
  EXPECT_TRUE(quota.take(other(3), 1));
}

TEST(Quota, RootAndTheAgentsUserMayTakeAll) {
  Quota quota({.all = 10, .others = 8, .oneUser = 5});
  EXPECT_TRUE(quota.take(::geteuid(), 9));
  EXPECT_TRUE(quota.take(0, 1));
  EXPECT_FALSE(quota.take(other(1), 1));
  EXPECT_FALSE(quota.take(0, static_cast<size_t>(-1))) << "no sum wraps";
}

TEST(Quota, AShareIsGivenBackAtItsEnd) {
  Quota quota({.all = 10, .others = 8, .oneUser = 5});
  std::optional<QuotaShare> share(std::in_place, quota, other(1));
  EXPECT_TRUE(share->resize(5));
  EXPECT_FALSE(share->resize(6));
  EXPECT_FALSE(quota.take(other(1), 1)) << "what could not grow has stayed";
  EXPECT_TRUE(share->resize(2));
  EXPECT_TRUE(quota.take(other(1), 3));
  quota.giveBack(other(1), 3);
  share.reset();
  EXPECT_TRUE(quota.take(other(1), 5));
}

TEST(Quota, ASmallShareIsFree) {
  Quota quota({.all = 10, .others = 10, .oneUser = 10, .free = 4});
  QuotaShare small(quota, 0);
  QuotaShare large(quota, 0);
  EXPECT_TRUE(large.resize(10));
  EXPECT_TRUE(small.resize(4));
  EXPECT_FALSE(small.resize(5));
  EXPECT_TRUE(large.resize(4));
  EXPECT_TRUE(small.resize(10)) << "it was given back as a whole";
}

}  // namespace
}  // namespace agent
