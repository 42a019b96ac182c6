// The one table of exit statuses is in the help of both programs.
#include "programs/exit_status.h"

#include <gmock/gmock.h>

#include "tests/system/system_test.h"

using testing::HasSubstr;

namespace system_testing {
namespace {

TEST_F(SystemTest, HelpOfBothProgramsHasTheExitStatuses) {
  EXPECT_EQ(exitStatusOf({"--help"}), programs::EXIT_OK);
  EXPECT_THAT(agent->output(), HasSubstr(programs::EXIT_STATUSES));
  EXPECT_THAT(client_testing::runClient({"--help"}).out, HasSubstr(programs::EXIT_STATUSES));
}

}  // namespace
}  // namespace system_testing
