#include "agent/bridge/bridge_server.h"

#include <gmock/gmock.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>

#include "agent/base/start_failure.h"
#include "tests/agent/bridge/raw_client.h"
#include "tests/agent/bridge/served_module.h"
#include "tests/module/child_process.h"
#include "tests/module/temp_directory.h"
#include "tests/support/another_user.h"

using agent_testing::ServedModule;
using testing::HasSubstr;

namespace agent {
namespace {

/// Why nobody can listen there; empty if it is possible.
std::string refusalOf(ServedModule& served, const std::string& path) {
  try {
    asio::io_context io;
    const BridgeServer server(io, path, served.service());
    return "";
  } catch (const StartFailure& error) {
    return error.what();
  }
}

TEST(BridgeServer, LeavesASocketAloneThatItMayNotTry) {
  if (const auto reason = testing_support::whyRightsStay(); !reason.empty()) GTEST_SKIP() << reason;
  const host::TempDirectory directory;
  const std::string path = directory.path + "agent.sock";
  asio::io_context io;
  ServedModule served;
  const BridgeServer server(io, path, served.service());
  ASSERT_EQ(chmod(path.c_str(), 0000), 0);
  if (geteuid() == 0) {
    ASSERT_EQ(chown(directory.path.c_str(), testing_support::NOBODY, testing_support::NOBODY), 0);
  }
  host::runInChild([&] {
    testing_support::dropRights();
    EXPECT_THAT(refusalOf(served, path), HasSubstr("whether an agent uses it cannot be found out: "
                                                   "Permission denied"));
  });
  EXPECT_TRUE(host::exists(path));
}

TEST(BridgeServer, TurnsAClientAwayForWhomThereIsNoThread) {
  if (const auto reason = testing_support::whyRightsStay(); !reason.empty()) GTEST_SKIP() << reason;
  host::runInChild([] {
    const host::TempDirectory directory;
    ASSERT_EQ(chmod(directory.path.c_str(), 0700), 0);
    if (geteuid() == 0) {
      ASSERT_EQ(chown(directory.path.c_str(), testing_support::NOBODY, testing_support::NOBODY), 0);
    }
    ServedModule served;
    testing_support::dropRights();
    asio::io_context io;
    BridgeServer server(io, directory.path + "agent.sock", served.service());
    const agent_testing::RawClient client(directory.path + "agent.sock");
    const rlimit none{0, 0};
    ASSERT_EQ(setrlimit(RLIMIT_NPROC, &none), 0);
    while (!client.isClosed()) (void)io.run_one();
    EXPECT_EQ(server.sessions(), 0u);
    server.stop();
    io.run();
  });
}

// In 32 bit all of them together have to leave room in the address space.
TEST(BridgeServer, GivesEachSessionAStackOfOneMebibyte) {
  const host::TempDirectory directory;
  ServedModule served;
  ASSERT_EQ(refusalOf(served, directory.path + "agent.sock"), "");
  pthread_attr_t attributes;
  size_t size = 0;
  ASSERT_EQ(::pthread_getattr_default_np(&attributes), 0);
  ASSERT_EQ(::pthread_attr_getstacksize(&attributes, &size), 0);
  (void)::pthread_attr_destroy(&attributes);
  EXPECT_EQ(size, 1'048'576u);
}

TEST(BridgeServer, RemovesItsSocketAtTheEnd) {
  const host::TempDirectory directory;
  const std::string path = directory.path + "agent.sock";
  ServedModule served;
  EXPECT_EQ(refusalOf(served, path), "");
  EXPECT_FALSE(host::exists(path));
}

TEST(BridgeServer, RemovesNoSocketButItsOwn) {
  const host::TempDirectory directory;
  const std::string path = directory.path + "agent.sock";
  ServedModule served;
  asio::io_context io;
  std::optional<BridgeServer> first(std::in_place, io, path, served.service());
  ASSERT_EQ(unlink(path.c_str()), 0);
  const BridgeServer second(io, path, served.service());
  first.reset();
  EXPECT_TRUE(host::exists(path));
  EXPECT_NO_THROW(agent_testing::RawClient{path});
}

TEST(BridgeServer, RemovesItsSocketBeforeItStopsToListen) {
  const host::TempDirectory directory;
  const std::string path = directory.path + "agent.sock";
  ServedModule served;
  asio::io_context io;
  BridgeServer first(io, path, served.service());
  first.stop();
  EXPECT_FALSE(host::exists(path));
  const BridgeServer second(io, path, served.service());
  first.stop();
  EXPECT_TRUE(host::exists(path));
}

}  // namespace
}  // namespace agent
