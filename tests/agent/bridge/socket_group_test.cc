#include "agent/bridge/socket_group.h"

#include <gmock/gmock.h>
#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include "agent/bridge/socket_path.h"
#include "tests/agent/bridge/served_module.h"
#include "tests/agent/state/scratch_directory.h"
#include "tests/module/child_process.h"
#include "tests/support/another_user.h"

namespace agent {
namespace {

using testing::HasSubstr;

/// A group that exists on every system, and that an ordinary user is not in.
const char* const GROUP = "daemon";

class SocketGroupTest : public testing::Test {
 protected:
  void serve(const char* mode) {
    (void)::chmod(scratch_.path.c_str(), static_cast<mode_t>(std::stoul(mode, nullptr, 8)));
    acceptor_.emplace(listenAt(io_, path_));
    group_.emplace(io_, path_, served_.rules(), served_.changes());
  }

  void name(const std::string& group) {
    testing_support::Settings settings;
    settings.adminGroup.ADMIN_GROUP.value = group;
    EXPECT_EQ(served_.write(testing_support::encodeRecord(settings.adminGroup)).result, 1);
    (void)io_.poll();
    io_.restart();
  }

  agent_testing::ServedModule served_;
  const agent_testing::ScratchDirectory scratch_;
  const std::string path_ = scratch_.at("agent.sock");
  asio::io_context io_;
  std::optional<asio::local::stream_protocol::acceptor> acceptor_;
  std::optional<SocketGroup> group_;
};

TEST_F(SocketGroupTest, IsTheAgentsOwnWhereNoneIsNamed) {
  serve("0750");
  name("");
  EXPECT_EQ(group_->problem(), "");
  EXPECT_EQ(scratch_.group("agent.sock"), ::getegid());
}

TEST_F(SocketGroupTest, IsTheOneThatTheSettingsName) {
  serve("0750");
  name(::getgrgid(::getegid())->gr_name);
  EXPECT_EQ(group_->problem(), "");
  name("no such group");
  EXPECT_EQ(group_->problem(), "group \"no such group\": the system knows no such group");
}

TEST_F(SocketGroupTest, IsToldOfWhenSomethingHasChanged) {
  const auto toldWhenNamed = [this](const std::string& group) {
    testing::internal::CaptureStderr();
    name(group);
    const std::string log = testing::internal::GetCapturedStderr();
    const size_t begin = log.find("the administrators' group ");
    return begin == std::string::npos ? "" : log.substr(begin, log.find(" socket=") - begin);
  };
  serve("0750");
  const std::string own = ::getgrgid(::getegid())->gr_name;
  (void)toldWhenNamed(own);
  EXPECT_EQ(toldWhenNamed(own), "");
  const std::string lost = "the administrators' group cannot reach the socket";
  EXPECT_EQ(toldWhenNamed("no such group"), lost);
  EXPECT_EQ(toldWhenNamed("no such group"), "");
  EXPECT_EQ(toldWhenNamed("none either"), lost);
  EXPECT_EQ(toldWhenNamed(own), "the administrators' group can reach the socket");
}

TEST_F(SocketGroupTest, CannotEnterAPrivateDirectory) {
  serve("0700");
  const std::string own = ::getgrgid(::getegid())->gr_name;
  name(own);
  EXPECT_EQ(group_->problem(), "group \"" + own + "\": " + scratch_.path +
                                   " cannot be entered by it; mode 0750 would be right");
}

TEST_F(SocketGroupTest, MustHaveTheAgentsUser) {
  if (const auto reason = testing_support::whyRightsStay(); !reason.empty()) GTEST_SKIP() << reason;
  if (::geteuid() == 0) {
    ASSERT_EQ(::chown(scratch_.path.c_str(), testing_support::NOBODY, testing_support::NOBODY), 0);
  }
  host::runInChild([this] {
    testing_support::dropRights();
    serve("0750");
    name(GROUP);
    EXPECT_EQ(group_->problem(), std::string("group \"") + GROUP + "\": " + scratch_.path +
                                     " cannot be given to it: Operation not permitted; the "
                                     "agent's user must be a member of it");
    EXPECT_EQ(scratch_.group("agent.sock"), ::getegid());
  });
}

}  // namespace
}  // namespace agent
