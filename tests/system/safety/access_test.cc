// Who may do what over the socket, and what a write may hold.
#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <list>
#include <optional>
#include <stop_token>
#include <thread>
#include <variant>

#include "bridge/protocol.h"
#include "tests/support/another_user.h"
#include "tests/support/records.h"
#include "tests/support/user_namespace.h"
#include "tests/system/safety/agent_test.h"

namespace safety {
namespace {

using agent_testing::exampleSettings;
using agent_testing::RawClient;
using bridge::Reason;
using bridge::Reply;
using testing::HasSubstr;
using testing::StartsWith;

constexpr uid_t STRANGER = 54321;
const char* const GROUP = "daemon";  // exists on every system

std::string recordOf(LPARAMS::Server::ParamGroup& group) {
  return testing_support::encodeRecord(group);
}

class Access : public AgentTest {
 protected:
  Access() { state_.write(SETTINGS, exampleSettings()); }

  /// What a user with these groups is told when he reads ADMIN, writes it back, and saves.
  std::string tries(gid_t gid, const std::vector<gid_t>& groups) {
    return asUser(STRANGER, gid, groups, [this] {
      const RawClient client(socket_);
      (void)client.greet();
      testing_support::Settings settings;
      const Reply read =
          client.exchange(bridge::Command{13, 1, testing_support::encodeName(settings.adminGroup)});
      const Reply write = client.exchange(bridge::Command{13, 0, recordOf(settings.adminGroup)});
      const Reply save = client.exchange(bridge::Command{13, 2});
      return inWords(read) + ", " + inWords(write) + ", " + inWords(save);
    });
  }

  static std::string inWords(const Reply& reply) {
    return reply.result == 1 ? "done" : std::to_string(static_cast<int>(reply.reason));
  }

  /// Lets everybody reach the socket.
  void openDirectory() {
    (void)::chmod(socket_.c_str(), 0666);
    (void)::chmod(place_.at("run").c_str(), 0755);
  }

  std::string refusedWrite(LPARAMS::Server::ParamGroup& group) {
    const RawClient client(socket_);
    (void)client.greet();
    const Reply reply = client.exchange(bridge::Command{13, 0, recordOf(group)});
    EXPECT_EQ(reply.reason, Reason::IllegalValue);
    return reply.text;
  }
};

TEST_F(Access, IsForTheGroupAlone) {
  start({"--admin-group", "root"});
  EXPECT_EQ(place_.mode("run"), 0750u);
  EXPECT_EQ(place_.mode("run/agent.sock"), 0660u);
}

TEST_F(Access, OneUserCannotTakeAllSessions) {
  if (const auto reason = testing_support::whyNoOtherUser(); !reason.empty()) {
    GTEST_SKIP() << reason;
  }
  start();
  openDirectory();
  const auto sessionsOf = [this](uid_t user) {
    return asUser(user, user, {}, [this] {
      std::list<RawClient> clients;
      do {
        clients.emplace_back(socket_);
      } while (clients.back().greet());
      return std::to_string(clients.size() - 1);
    });
  };
  EXPECT_EQ(sessionsOf(STRANGER), "128");
  EXPECT_TRUE(logTells("a client was turned away: too many sessions sessions=128 uid=54321"));
  while (state("sessions") != "1") continue;  // the agent notices their end in its own time
  std::list<RawClient> own;
  for (int i = 0; i < 256; ++i) EXPECT_TRUE(own.emplace_back(socket_).greet());
}

TEST_F(Access, OfMembersOfTheGroup) {
  if (const auto reason = testing_support::whyNoOtherUser(); !reason.empty()) {
    GTEST_SKIP() << reason;
  }
  const gid_t group = ::getgrnam(GROUP)->gr_gid;
  start({"--admin-group", GROUP});
  EXPECT_EQ(tries(group, {}), "done, done, done");
  EXPECT_EQ(tries(STRANGER, {7, group}), "done, done, done");
  EXPECT_EQ(tries(STRANGER, {7}), socket_ + ": Permission denied");
  openDirectory();
  EXPECT_EQ(tries(STRANGER, {7}), "done, 2, 2");  // not authorised
  EXPECT_EQ(get("ADMIN.SESSION_EXPTIME"), "10\n");
}

TEST_F(Access, OfMembersOfTheGroupInTheSettings) {
  if (const auto reason = testing_support::whyNoOtherUser(); !reason.empty()) {
    GTEST_SKIP() << reason;
  }
  const gid_t group = ::getgrnam(GROUP)->gr_gid;
  start();
  openDirectory();
  EXPECT_EQ(tries(group, {}), "done, 2, 2");  // the file names another group
  set(std::string("ADMIN.ADMIN_GROUP=") + GROUP);
  EXPECT_EQ(tries(group, {}), "done, done, 2");  // and writes that one back
}

using AccessInUserNamespace = testing_support::InUserNamespace<Access>;
INSTANTIATE_IN_USER_NAMESPACE(AccessInUserNamespace);

TEST_P(AccessInUserNamespace, OfNoUserWithoutANumber) {
  if (const auto reason = testing_support::whyNoOtherUser(); !reason.empty()) {
    GTEST_SKIP() << reason;
  }
  const ::group* const nobodies = ::getgrgid(65534);  // what those are in that have none
  if (nobodies == nullptr) GTEST_SKIP() << "the system has no group 65534";
  const std::string name = nobodies->gr_name;
  start({"--admin-group", name}, {.inChild = testing_support::enterUserNamespace});
  EXPECT_EQ(state("groupProblem"), "group \"" + name +
                                       "\": its number stands for every group without one in "
                                       "this namespace");
  openDirectory();
  EXPECT_EQ(tries(STRANGER, {STRANGER}), "done, 2, 2");
}

class SocketGroup : public Access {
 protected:
  /// The number of a group that the agent can give files to; what else to do if there is none.
  static std::optional<gid_t> another() {
    const agent_testing::ScratchDirectory scratch;
    const ::group* const found = ::getgrnam(GROUP);
    if (found == nullptr || ::chown(scratch.path.c_str(), -1, found->gr_gid) != 0) return {};
    return found->gr_gid;
  }

  /// Waits: the files follow after the reply to the write.
  void waitUntilAllBelongTo(gid_t group) {
    for (const char* name : {"run", "run/agent.sock"}) {
      while (place_.group(name) != group) std::this_thread::yield();
    }
  }
};

TEST_F(SocketGroup, FollowsTheSettings) {
  const auto group = another();
  if (!group) GTEST_SKIP() << "files cannot be given to group " << GROUP << " here";
  (void)::mkdir(place_.at("run").c_str(), 0750);
  start();
  EXPECT_EQ(state("groupProblem"), "group \"gateway-admins\": the system knows no such group");
  EXPECT_THAT(log(), HasSubstr("notice: the administrators' group cannot reach the socket "));
  waitUntilAllBelongTo(::getegid());
  set(std::string("ADMIN.ADMIN_GROUP=") + GROUP);
  waitUntilAllBelongTo(*group);
  while (state("groupProblem") != "no") continue;
  set("ADMIN.ADMIN_GROUP=no such group");
  waitUntilAllBelongTo(::getegid());
  while (state("groupProblem") == "no") continue;
  EXPECT_EQ(state("groupProblem"), "group \"no such group\": the system knows no such group");
}

TEST_F(SocketGroup, IsGivenAnExistingDirectory) {
  const auto group = another();
  if (!group) GTEST_SKIP() << "files cannot be given to group " << GROUP << " here";
  (void)::mkdir(place_.at("run").c_str(), 0750);
  start({"--admin-group", GROUP});
  EXPECT_EQ(state("groupProblem"), "no");
  EXPECT_EQ(place_.group("run"), *group);
  EXPECT_EQ(place_.group("run/agent.sock"), *group);
}

TEST_F(Access, IllegalValuesAreRefused) {
  start();
  testing_support::Settings settings;
  settings.ikeGroup.EXCHANGE_TIMEOUT.value = 601;
  EXPECT_EQ(refusedWrite(settings.ikeGroup),
            "IKE.EXCHANGE_TIMEOUT: 601 is not legal; expected a whole number from 5 to 600");
  settings.adminGroup.ADMIN_GROUP.value = "a\nLOG_LEVEL=1";
  EXPECT_THAT(refusedWrite(settings.adminGroup),
              StartsWith("ADMIN.ADMIN_GROUP: \"a\\x0aLOG_LEVEL=1\" "));
  EXPECT_EQ(state("changed"), "no");
}

TEST_F(Access, IllegalValuesReachTheModuleIfTheyMay) {
  start({"--accept-any"});
  EXPECT_EQ(state("strict"), "no");
  const RawClient client(socket_);
  ASSERT_TRUE(client.greet());
  testing_support::Settings settings;
  settings.ikeGroup.EXCHANGE_TIMEOUT.value = 601;
  EXPECT_EQ(
      client.exchange(bridge::Command{13, 0, recordOf(settings.ikeGroup) + "trailing"}).result, 1);
  EXPECT_EQ(get("IKE.EXCHANGE_TIMEOUT"), "601\n");
  EXPECT_EQ(client.exchange(bridge::Command{13, 0, "\3"}).reason, Reason::MalformedInput);
}

TEST_F(Access, SoManyUsers) {
  start({"--max-users", "3"});
  EXPECT_EQ(ctl({"user", "add", "carol"}), (Outcome{0, "USERS[carol]: added\n"}));
  EXPECT_EQ(ctl({"user", "add", "dave"}),
            (Outcome{65,
                     "lparamsctl: USERS: 4 entries are too many; expected at most 3\n"
                     "lparamsctl: nothing was written\n"}));
  EXPECT_EQ(get("USERS[2].NAME"), "carol\n");
}

TEST_F(Access, WritesFromAStaleReadAreConflicts) {
  start();
  const RawClient first(socket_);
  const RawClient second(socket_);
  ASSERT_TRUE(first.greet() && second.greet());
  testing_support::Settings settings;
  const bridge::Command read{13, 1, testing_support::encodeName(settings.adminGroup)};
  bridge::Command write{13, 0, recordOf(settings.adminGroup)};
  write.revision = first.exchange(read).revision;
  EXPECT_EQ(second.exchange(read).revision, write.revision);

  EXPECT_EQ(second.exchange(write).result, 1);
  const Reply conflict = first.exchange(write);
  EXPECT_EQ(conflict.reason, Reason::Conflict);
  EXPECT_THAT(conflict.text, HasSubstr("ADMIN has changed: it was read at revision " +
                                       std::to_string(*write.revision) + " "));
  write.revision = conflict.revision;
  EXPECT_EQ(first.exchange(write).result, 1);
}

TEST_F(Access, WritesFromAReadBeforeARestartAreConflicts) {
  testing_support::Settings settings;
  bridge::Command write{13, 0, recordOf(settings.adminGroup)};
  start();
  {
    const RawClient client(socket_);
    ASSERT_TRUE(client.greet());
    write.revision =
        client.exchange(bridge::Command{13, 1, testing_support::encodeName(settings.adminGroup)})
            .revision;
  }
  EXPECT_EQ(stop(), 0);
  start();
  const RawClient client(socket_);
  ASSERT_TRUE(client.greet());
  EXPECT_EQ(client.exchange(write).reason, Reason::Conflict);
}

TEST_F(Access, SubscribersHearWhoWroteWhat) {
  start();
  const RawClient subscriber(socket_);
  ASSERT_TRUE(subscriber.greet());
  EXPECT_EQ(subscriber.exchange(bridge::Subscription{}), (Reply{.result = 1}));
  const RawClient writer(socket_);
  ASSERT_TRUE(writer.greet());
  testing_support::Settings settings;
  for (int i = 0; i < 2; ++i) {
    const Reply written = writer.exchange(bridge::Command{13, 0, recordOf(settings.logGroup)});
    EXPECT_EQ(written.result, 1);
    const bridge::Event event{"LOG", written.revision, ::getuid(), ::getpid()};
    EXPECT_EQ(std::get<bridge::Event>(subscriber.receive().value()), event);
  }

  Process watch({PRODUCTS_DIR "/lparamsctl", "--socket", socket_, "watch"});
  const std::jthread writing([&](const std::stop_token& stop) {
    // Nothing says when the other one has subscribed.
    while (!stop.stop_requested()) {
      (void)writer.exchange(bridge::Command{13, 0, recordOf(settings.logGroup)});
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  });
  EXPECT_TRUE(watch.waitFor(", uid " + std::to_string(::getuid()) + ", pid " +
                            std::to_string(::getpid()) + ")\n"));
  EXPECT_THAT(watch.output(), testing::HasSubstr("Z LOG: written, nothing has changed   ("));
}

}  // namespace
}  // namespace safety
