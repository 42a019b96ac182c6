#include "agent/base/start_failure.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <system_error>

namespace agent {
namespace {

/// "STATUS: the message" of what the step throws; "no failure" if it returns.
std::string failureOf(const std::function<void()>& step) {
  try {
    startStep(EXIT_IO, step);
    return "no failure";
  } catch (const StartFailure& failure) {
    return std::to_string(failure.exitStatus) + ": " + failure.what();
  }
}

TEST(StartFailure, SaysWhyAndCarriesTheExitStatus) {
  EXPECT_EQ(failureOf([] { throw StartFailure(EXIT_TRY_AGAIN, "taken"); }), "75: taken");
}

TEST(StartFailure, IsWhatAStepOfTheStartThrows) {
  EXPECT_EQ(failureOf([] {}), "no failure");
  EXPECT_EQ(failureOf([] { throw std::runtime_error("odd"); }), "74: odd");
  EXPECT_EQ(failureOf([] {
              throw std::system_error(ENOSPC, std::generic_category(), "a cannot be written");
            }),
            "74: a cannot be written: No space left on device");
}

TEST(StartFailure, AStepReturnsItsResult) {
  EXPECT_EQ(startStep(EXIT_IO, [] { return 5; }), 5);
}

}  // namespace
}  // namespace agent
