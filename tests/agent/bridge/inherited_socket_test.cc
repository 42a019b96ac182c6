#include "agent/bridge/inherited_socket.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "agent/base/start_failure.h"
#include "tests/agent/state/scratch_directory.h"

namespace agent {
namespace {

using testing::HasSubstr;

void passVariables(const std::string& process, const std::string& count) {
  (void)::setenv("LISTEN_PID", process.c_str(), 1);
  (void)::setenv("LISTEN_FDS", count.c_str(), 1);
  (void)::setenv("LISTEN_FDNAMES", "agent", 1);
}

TEST(InheritedDescriptor, IsForThisProcessAlone) {
  const std::string own = std::to_string(::getpid());
  const struct {
    std::string process, count;
    std::optional<int> descriptor;
  } rows[] = {
      {own, "1", 3},           {own, "0", std::nullopt},       {own, "-1", std::nullopt},
      {own, "", std::nullopt}, {own, "1x", std::nullopt},      {"1", "1", std::nullopt},
      {"", "1", std::nullopt}, {own + "x", "1", std::nullopt},
  };
  for (const auto& row : rows) {
    passVariables(row.process, row.count);
    EXPECT_EQ(inheritedDescriptor(), row.descriptor) << row.process << " " << row.count;
    EXPECT_EQ(std::getenv("LISTEN_FDS"), nullptr);
  }
  passVariables(own, "1");
  EXPECT_EQ(inheritedDescriptor(), 3);
  EXPECT_EQ(inheritedDescriptor(), std::nullopt);
}

TEST(InheritedDescriptor, IsTheOnlyOne) {
  passVariables(std::to_string(::getpid()), "2");
  EXPECT_THROW((void)inheritedDescriptor(), StartFailure);
}

class InheritedSocket : public testing::Test {
 protected:
  InheritedSocket() {
    std::filesystem::create_directory(scratch_.at("run"));
    std::filesystem::permissions(scratch_.at("run"), std::filesystem::perms(0750));
  }

  /// As the manager makes it. The descriptor is whoever's it is given to.
  static int socketAt(const std::string& path, int type = SOCK_STREAM, bool listens = true) {
    const int descriptor = ::socket(AF_UNIX, type, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    (void)path.copy(address.sun_path, sizeof address.sun_path - 1);
    EXPECT_EQ(::bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0)
        << std::strerror(errno);
    EXPECT_TRUE(!listens || ::listen(descriptor, 5) == 0);
    return descriptor;
  }

  /// Why the agent cannot listen on it for clients at the path; empty if it can.
  static std::string refusalOf(int descriptor, const std::string& path) {
    try {
      asio::io_context io;
      (void)listenOn(io, descriptor, path);
      return "";
    } catch (const StartFailure& error) {
      (void)::close(descriptor);
      return error.what();
    }
  }

  const agent_testing::ScratchDirectory scratch_;
  const std::string path_ = scratch_.at("run/agent.sock");
};

TEST_F(InheritedSocket, TakesClients) {
  asio::io_context io;
  auto acceptor = listenOn(io, socketAt(path_), path_);
  EXPECT_NE(::fcntl(acceptor.native_handle(), F_GETFD) & FD_CLOEXEC, 0);
  EXPECT_TRUE(acceptor.native_non_blocking());
  asio::local::stream_protocol::socket client(io);
  client.connect({path_});
  EXPECT_TRUE(acceptor.accept().is_open());
}

TEST_F(InheritedSocket, MayBeFoundOverALink) {
  std::filesystem::create_directory_symlink("run", scratch_.at("link"));
  EXPECT_EQ(refusalOf(socketAt(path_), scratch_.at("link/agent.sock")), "");
}

TEST_F(InheritedSocket, IsAStreamSocketThatListens) {
  const char* const reason = "is not a Unix stream socket that listens";
  EXPECT_THAT(refusalOf(socketAt(path_, SOCK_STREAM, false), path_), HasSubstr(reason));
  std::filesystem::remove(path_);
  EXPECT_THAT(refusalOf(socketAt(path_, SOCK_SEQPACKET), path_), HasSubstr(reason));
  EXPECT_THAT(refusalOf(::open("/dev/null", O_RDONLY | O_CLOEXEC), path_), HasSubstr(reason));
  EXPECT_THAT(refusalOf(-1, path_), HasSubstr(reason));
}

TEST_F(InheritedSocket, IsWhereClientsLookForIt) {
  EXPECT_THAT(refusalOf(socketAt(path_), scratch_.at("run/other.sock")),
              HasSubstr("is at \"" + path_ + "\", where clients do not look for it"));
  const int removed = socketAt(scratch_.at("run/removed.sock"));
  std::filesystem::remove(scratch_.at("run/removed.sock"));
  EXPECT_THAT(refusalOf(removed, scratch_.at("run/removed.sock")), HasSubstr("do not look"));
  const int unbound = ::socket(AF_UNIX, SOCK_STREAM, 0);
  ASSERT_EQ(::listen(unbound, 5), -1);  // has no name
  EXPECT_NE(refusalOf(unbound, path_), "");
}

TEST_F(InheritedSocket, IsOutOfReachOfOthers) {
  std::filesystem::permissions(scratch_.at("run"), std::filesystem::perms(0755));
  EXPECT_THAT(refusalOf(socketAt(path_), path_), HasSubstr("others can enter or change"));
}

}  // namespace
}  // namespace agent
