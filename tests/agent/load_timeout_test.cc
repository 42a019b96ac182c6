#include "agent/load_timeout.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/time.h>

#include <csignal>
#include <string>

#include "agent/base/exit_status.h"
#include "agent/base/log.h"

namespace agent {
namespace {

/// Seconds of processor time until the process gets SIGPROF; 0 if it does not.
double left() {
  itimerval timer{};
  EXPECT_EQ(::getitimer(ITIMER_PROF, &timer), 0);
  EXPECT_EQ(timer.it_interval.tv_sec + timer.it_interval.tv_usec, 0);
  return static_cast<double>(timer.it_value.tv_sec) +
         static_cast<double>(timer.it_value.tv_usec) / 1e6;
}

bool wouldEnd() {
  struct sigaction action {};
  (void)::sigaction(SIGPROF, nullptr, &action);
  return action.sa_handler != SIG_DFL;
}

TEST(LoadTimeout, IsOffAfterwards) {
  {
    const LoadTimeout timeout(0);
    EXPECT_GT(left(), 0);
    EXPECT_LT(left(), 1.5);
    EXPECT_TRUE(wouldEnd());
  }
  EXPECT_EQ(left(), 0);
  EXPECT_FALSE(wouldEnd());
}

TEST(LoadTimeout, GrowsWithTheFile) {
  const LoadTimeout timeout(16 * 1024 * 1024);
  EXPECT_GT(left(), 64.5);
  EXPECT_LT(left(), 65.5);
}

TEST(LoadTimeout, EndsTheProcessWithALineOfTheLog) {
  const auto spin = [] {
    const LoadTimeout timeout(0);
    for (;;) (void)::poll(nullptr, 0, 0);  // a call: the thread sanitizer delivers signals in one
  };
  const std::string line = "lparams_agent: error: the settings file could not be read: the module";
  EXPECT_EXIT(spin(), testing::ExitedWithCode(EXIT_UNAVAILABLE), "^" + line);
  logForJournal();
  EXPECT_EXIT(spin(), testing::ExitedWithCode(EXIT_UNAVAILABLE), "^<3>" + line);
}

}  // namespace
}  // namespace agent
