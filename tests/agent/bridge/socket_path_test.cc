#include "agent/bridge/socket_path.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "agent/base/start_failure.h"
#include "tests/agent/state/scratch_directory.h"
#include "tests/support/another_user.h"

namespace agent {
namespace {

using testing::HasSubstr;
using testing_support::NOBODY;

class SocketPath : public testing::Test {
 protected:
  SocketPath() { std::filesystem::create_directory(scratch_.at("run")); }

  /// Why nobody can listen there; empty if it is possible.
  static std::string refusalOf(const std::string& path) {
    try {
      asio::io_context io;
      (void)listenAt(io, path);
      return "";
    } catch (const StartFailure& error) {
      return error.what();
    }
  }

  void SetUp() override { std::filesystem::permissions(scratch_.at("run"), private_); }

  const std::filesystem::perms private_{0750};
  const agent_testing::ScratchDirectory scratch_;
};

TEST_F(SocketPath, MayLeadOverLinksOfItsUser) {
  std::filesystem::create_directory_symlink("run", scratch_.at("link"));
  EXPECT_EQ(refusalOf(scratch_.at("link/agent.sock")), "");
  EXPECT_NE(identityOf(scratch_.at("run/agent.sock")), FileIdentity{});
}

TEST_F(SocketPath, MayNotLeadInCircles) {
  std::filesystem::create_directory_symlink("link", scratch_.at("link"));
  EXPECT_THAT(refusalOf(scratch_.at("link/agent.sock")),
              HasSubstr("Too many levels of symbolic links"));
}

TEST_F(SocketPath, MayNotLeadOverLinksOfOthers) {
  std::filesystem::create_directory_symlink("run", scratch_.at("link"));
  std::filesystem::create_directory_symlink(scratch_.at("link"), scratch_.at("own"));
  if (::lchown(scratch_.at("link").c_str(), NOBODY, NOBODY) != 0) {
    GTEST_SKIP() << "files cannot be given to another user here";
  }
  for (const char* path : {"link/agent.sock", "own/agent.sock"}) {
    EXPECT_THAT(refusalOf(scratch_.at(path)),
                HasSubstr("is not safe: " + scratch_.at("link") + " is a link of user " +
                          std::to_string(NOBODY) + ", who can lead clients elsewhere"));
  }
  EXPECT_EQ(identityOf(scratch_.at("run/agent.sock")), FileIdentity{});
}

TEST_F(SocketPath, MayNotBeInADirectoryOfOthers) {
  if (::chown(scratch_.at("run").c_str(), NOBODY, NOBODY) != 0) {
    GTEST_SKIP() << "files cannot be given to another user here";
  }
  EXPECT_THAT(refusalOf(scratch_.at("run/agent.sock")),
              HasSubstr("is not safe: its directory " + scratch_.at("run") + " belongs to user " +
                        std::to_string(NOBODY)));
  EXPECT_EQ(identityOf(scratch_.at("run/agent.sock")), FileIdentity{});
}

}  // namespace
}  // namespace agent
