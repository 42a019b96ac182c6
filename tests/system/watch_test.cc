// What those who watch the agent are told.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "bridge/named_values.h"
#include "tests/module/child_process.h"
#include "tests/support/another_user.h"
#include "tests/support/held_sync.h"
#include "tests/system/system_test.h"

using bridge::Change;
using bridge::Notice;
using testing::ElementsAre;
using testing::HasSubstr;

namespace system_testing {
namespace {

class Watching : public SystemTest {
 protected:
  /// A session that watches from now on.
  BridgeClient watcher() const {
    BridgeClient client = connect();
    EXPECT_EQ(client.call("watch", ""), bridge::Reply{1});
    return client;
  }

  /// A notice in words, with its group's revision counted from the first one's.
  std::string inWords(const Notice& notice) {
    EXPECT_EQ(notice.uid, ::geteuid());
    EXPECT_GE(notice.time, lastTime_);
    lastTime_ = notice.time;
    std::string words = std::to_string(notice.what);
    if (!notice.group.empty()) {
      const auto first = revisions_.emplace(notice.group, notice.revision).first->second;
      words += " " + notice.group + "+" + std::to_string(notice.revision - first);
    }
    if (!notice.text.empty()) words += " " + notice.text;
    for (const auto& [kind, value] : notice.changes) {
      words +=
          " " + value.name + "=" + value.before.value_or("-") + ">" + value.running.value_or("-");
    }
    return words;
  }
  std::string next(const BridgeClient& client) { return inWords(client.receiveNotice()); }

  static bridge::Reply set(const BridgeClient& client, const std::vector<Change>& steps) {
    return client.call("set", bridge::encode(bridge::NamedChanges{{}, steps}));
  }

 private:
  uint64_t lastTime_ = 0;
  std::map<std::string, uint64_t> revisions_;
};

TEST_F(Watching, TellsOfWritesAndSavesInTheirOrder) {
  start();
  const BridgeClient watching = watcher();
  const BridgeClient client = connect();
  const bridge::Reply admin = client.read("ADMIN");
  EXPECT_EQ(client.write("ADMIN", admin.output).result, 1);
  EXPECT_EQ(set(client, {{Change::Set, "LOG.WALL_ON", "0"},
                         {Change::Set, "IKE.QCD_SECRET", "sesame"},
                         {Change::Set, "IKE.DPD_IDLE_TIME", "77"},
                         {Change::AddUser, "anna"},
                         {Change::Set, "USERS[anna].PMP_TIMEOUT", "20"}})
                .result,
            1);
  EXPECT_EQ(client.save().result, 1);
  EXPECT_EQ(client.save().result, 1);
  EXPECT_EQ(set(client, {{Change::RemoveUser, "anna"}}).result, 1);
  EXPECT_EQ(next(watching), "1 ADMIN+0");
  EXPECT_EQ(next(watching), "1 IKE+0 IKE.QCD_SECRET=->- IKE.DPD_IDLE_TIME=30>77");
  EXPECT_EQ(next(watching), "1 LOG+0 LOG.WALL_ON=1>0");
  EXPECT_EQ(next(watching), "1 USERS+0 USERS[anna]=->- USERS[anna].PMP_TIMEOUT=->20");
  EXPECT_EQ(next(watching), "3");
  EXPECT_EQ(next(watching), "4") << "nothing had to be written";
  const Notice removed = watching.receiveNotice();
  EXPECT_EQ(inWords(removed), "1 USERS+1 USERS[anna]=->-");
  EXPECT_EQ(removed.changes.at(0).kind, bridge::NoticedChange::UserRemoved);
  EXPECT_EQ(removed.pid, ::getpid());
  EXPECT_THAT(removed.program, testing::Not(testing::IsEmpty()));
}

TEST_F(Watching, TellsWhyASaveFailsAndOfTheDegradationsEnd) {
  start();
  stop();
  std::string text = host::readFile(settingsPath);
  host::writeFile(settingsPath, text.replace(text.find("IKE_PORT=500"), 12, "IKE_PORT=abc"));
  start();
  const BridgeClient watching = watcher();
  const Notice degraded = watching.receiveNotice();
  EXPECT_EQ(degraded.what, Notice::DegradationBegan);
  EXPECT_THAT(degraded.text, HasSubstr("is not what was saved last"));
  EXPECT_EQ(degraded.program, "lparams_agent");
  EXPECT_NE(degraded.pid, ::getpid());

  const BridgeClient client = connect();
  EXPECT_EQ(client.save().reason, bridge::Reason::SaveRefused);
  const Notice failed = watching.receiveNotice();
  EXPECT_EQ(failed.what, Notice::NotSaved);
  EXPECT_EQ(failed.reason, bridge::Reason::SaveRefused);
  EXPECT_THAT(failed.text, HasSubstr("not loaded whole"));
  EXPECT_EQ(failed.pid, ::getpid());

  EXPECT_EQ(client.call({.module = SETTINGS_MODULE, .command = SAVE, .force = true}).result, 1);
  EXPECT_EQ(next(watching), "3");
  EXPECT_EQ(next(watching), "8");
}

TEST_F(Watching, TellsOfRefusedWritesAndWhoWantedThem) {
  if (const auto reason = testing_support::whyNoOtherUser(); !reason.empty()) {
    GTEST_SKIP() << reason;
  }
  start({{"--admin-group", "no-such-group"}});
  ASSERT_EQ(chmod(directory.path.c_str(), 0755), 0);
  ASSERT_EQ(chmod(socketPath.c_str(), 0666), 0);
  const BridgeClient watching = watcher();
  host::runInChild([&] {
    testing_support::dropRights();
    const BridgeClient stranger = connect();
    for (int i = 0; i < 50; ++i) {
      EXPECT_EQ(set(stranger, {{Change::Set, "LOG.WALL_ON", "0"}}).result, 0);
    }
  });
  const Notice refused = watching.receiveNotice();
  EXPECT_EQ(refused.what, Notice::Refused);
  EXPECT_EQ(refused.reason, bridge::Reason::NotAuthorised);
  EXPECT_NE(refused.uid, ::geteuid());
  EXPECT_THAT(refused.text, HasSubstr("may not use module 13 at level 0"));
}

TEST_F(Watching, TellsTheEndBehindWhatIsStillDone) {
  start();
  const BridgeClient client = connect();
  EXPECT_EQ(set(client, {{Change::Set, "LOG.WALL_ON", "0"}}).result, 1);
  const BridgeClient watching = watcher();
  {
    testing_support::HeldSync save(settingsPath + ".good.new");
    client.send(bridge::encode(bridge::Command{SETTINGS_MODULE, SAVE}));
    save.waitForBegin();
    agent->signal(SIGTERM);
    EXPECT_TRUE(agent->waitForLog("stopping"));
  }
  EXPECT_EQ(client.receiveReply().result, 1);
  EXPECT_EQ(next(watching), "3");
  const Notice end = watching.receiveNotice();
  EXPECT_EQ(end.what, Notice::AgentEnds);
  EXPECT_EQ(end.program, "lparams_agent");
  EXPECT_TRUE(watching.isClosed());
  EXPECT_EQ(agent->exitStatus(), 0);
}

TEST_F(Watching, LeavesTheSubscriptionAsItWas) {
  start();
  const BridgeClient client = connect();
  client.send(bridge::encode(bridge::Subscription{}));
  EXPECT_EQ(client.receiveReply(), bridge::Reply{1});
  const bridge::Reply admin = client.read("ADMIN");
  const bridge::Reply written = connect().write("ADMIN", admin.output);
  const std::string event =
      bridge::encode(bridge::Event{"ADMIN", written.revision, ::geteuid(), ::getpid()});
  EXPECT_EQ(client.receive(event.size()), event);
  EXPECT_EQ(client.read("ADMIN").revision, written.revision) << "nothing else was sent";
}

}  // namespace
}  // namespace system_testing
