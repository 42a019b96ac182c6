#include "agent/bridge_server.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <stdexcept>
#include <string>

#include "tests/agent/another_user.h"
#include "tests/module/child_process.h"
#include "tests/module/temp_directory.h"

using testing::HasSubstr;

namespace agent {
namespace {

/// Why nobody can listen there; empty if it is possible.
std::string refusalOf(const std::string& path) {
  try {
    asio::io_context io;
    const BridgeServer server(io, path);
    return "";
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

TEST(BridgeServer, LeavesASocketAloneThatItMayNotTry) {
  const host::TempDirectory directory;
  const std::string path = directory.path + "agent.sock";
  asio::io_context io;
  const BridgeServer server(io, path);
  ASSERT_EQ(chmod(path.c_str(), 0000), 0);
  ASSERT_EQ(chmod(directory.path.c_str(), 0777), 0);
  host::runInChild([&] {
    agent_testing::dropRights();
    EXPECT_THAT(refusalOf(path), HasSubstr("whether an agent uses it cannot be found out: "
                                           "Permission denied"));
  });
  EXPECT_TRUE(host::exists(path));
}

TEST(BridgeServer, RemovesItsSocketAtTheEnd) {
  const host::TempDirectory directory;
  const std::string path = directory.path + "agent.sock";
  EXPECT_EQ(refusalOf(path), "");
  EXPECT_FALSE(host::exists(path));
}

}  // namespace
}  // namespace agent
