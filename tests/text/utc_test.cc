#include "text/utc.h"

#include <gtest/gtest.h>

#include <limits>

namespace text {
namespace {

TEST(Utc, IsADateAndATime) {
  EXPECT_EQ(utc(0), "1970-01-01T00:00:00Z");
  EXPECT_EQ(utc(4'102'444'799), "2099-12-31T23:59:59Z");
}

TEST(Utc, HasNoneBeyondAllCalendars) {
  EXPECT_EQ(utc(std::numeric_limits<std::time_t>::max()), "(no time)");
}

}  // namespace
}  // namespace text
