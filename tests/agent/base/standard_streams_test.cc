#include "agent/base/standard_streams.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "tests/module/child_process.h"

namespace agent {
namespace {

bool isDevNull(int file) {
  struct stat status {};
  struct stat null {};
  return ::fstat(file, &status) == 0 && ::stat("/dev/null", &null) == 0 &&
         S_ISCHR(status.st_mode) && status.st_rdev == null.st_rdev;
}

TEST(StandardStreams, AreDevNullWhereTheyWereClosed) {
  const struct {
    std::vector<int> closed;
    const char* names;
  } rows[] = {
      {{0, 1, 2}, "input, output, error"},
      {{0}, "input"},
      {{1}, "output"},
      {{2}, "error"},
      {{}, ""},
  };
  for (const auto& row : rows) {
    const int status = host::statusOfChild([&] {
      for (const int file : row.closed) (void)::close(file);
      bool right = openClosedStreams() == row.names;
      for (const int file : row.closed) right = right && isDevNull(file);
      right = right && logIsClosed() == (!row.closed.empty() && row.closed.back() == 2);
      ::_exit(right ? 0 : 1);
    });
    EXPECT_EQ(status, 0) << row.names;
  }
}

}  // namespace
}  // namespace agent
