#include "agent/services/paths_service.h"

#include <gtest/gtest.h>

#include "platform/paths_service.h"

TEST(PathsService, AnswersWithASlashAtTheEnd) {
  const struct {
    const char* directory;
    const char* answer;
  } rows[] = {
      {"/var/lib/x", "/var/lib/x/"},
      {"/var/lib/x/", "/var/lib/x/"},
      {"relative", "relative/"},
      {"/", "/"},
  };
  for (const auto& row : rows) {
    agent::setSystemVarDir(row.directory);
    EXPECT_EQ(systemVarDir(), row.answer);
  }
}
