// The history of the settings, with the real agent.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include "bridge/bytes.h"
#include "bridge/history.h"
#include "bridge/named_values.h"
#include "tests/system/system_test.h"

namespace system_testing {
namespace {

using bridge::Change;
using testing::HasSubstr;

class HistoryOfAgent : public SystemTest {
 protected:
  static void set(const BridgeClient& client, const std::string& name, const std::string& value) {
    const auto reply =
        client.call("set", bridge::encode(bridge::NamedChanges{{}, {{Change::Set, name, value}}}));
    ASSERT_EQ(reply.result, 1) << reply.text;
  }

  static void save(const BridgeClient& client, const std::string& message) {
    const auto reply = client.call("save", bridge::encode(bridge::SaveRequest{.message = message}));
    ASSERT_EQ(reply.result, 1) << reply.text;
  }

  std::vector<bridge::Revision> history() const {
    const auto reply = connect().call("history", {});
    EXPECT_EQ(reply.result, 1) << reply.text;
    auto revisions = bridge::decodeRevisions(reply.output);
    EXPECT_TRUE(revisions);
    return revisions.value_or(std::vector<bridge::Revision>());
  }

  std::vector<std::string> messages() const {
    std::vector<std::string> messages;
    for (const bridge::Revision& revision : history()) messages.push_back(revision.message);
    return messages;
  }

  std::string state() const { return connect().state(); }
};

TEST_F(HistoryOfAgent, GoesOnOverRestarts) {
  start({{"--history", "3"}});
  {
    const BridgeClient client = connect();
    set(client, "IKE.IKE_PORT", "501");
    save(client, "one");
    set(client, "IKE.IKE_PORT", "502");
    save(client, "two");
  }
  stop(SIGTERM);
  start({{"--history", "3"}});
  EXPECT_THAT(messages(), testing::ElementsAre("two", "one", "the settings as the history begins"));
  {
    const BridgeClient client = connect();
    set(client, "IKE.IKE_PORT", "503");
    save(client, "three");
  }
  const auto revisions = history();
  ASSERT_EQ(revisions.size(), 3u);
  EXPECT_EQ(revisions[0].number, 4u);
  EXPECT_EQ(revisions[0].uid, ::geteuid());
  EXPECT_EQ(revisions[0].pid, ::getpid());
  EXPECT_EQ(revisions[0].changes.at(0).before, "502");
  EXPECT_EQ(revisions[2].number, 2u) << "the first one is forgotten";
  EXPECT_THAT(state(), HasSubstr("\"history\":4,\"historyProblem\":null"));
}

TEST_F(HistoryOfAgent, TellsOfAnEditWhileNoAgentRan) {
  start();
  stop(SIGTERM);
  std::string text = host::readFile(settingsPath);
  text.replace(text.find("IKE_PORT=500"), 12, "IKE_PORT=777");
  host::writeFile(settingsPath, text);
  start();
  const auto revisions = history();
  ASSERT_EQ(revisions.size(), 2u);
  EXPECT_THAT(revisions[0].message, HasSubstr("found at a start"));
  EXPECT_EQ(revisions[0].program, "lparams_agent");
  ASSERT_EQ(revisions[0].changes.size(), 1u);
  EXPECT_EQ(revisions[0].changes[0],
            (bridge::NamedValue{.name = "IKE.IKE_PORT", .running = "777", .before = "500"}));
}

/// As after a power cut between the two, too.
TEST_F(HistoryOfAgent, MakesGoodWhatIsMissing) {
  start();
  {
    const BridgeClient client = connect();
    set(client, "IKE.IKE_PORT", "501");
    save(client, "one");
  }
  agent->signal(SIGKILL);
  (void)agent->exitStatus();
  std::filesystem::remove(stateDir + "/history.2");
  start();
  const auto revisions = history();
  ASSERT_EQ(revisions.size(), 2u);
  EXPECT_THAT(revisions[0].message, HasSubstr("found at a start"));
  EXPECT_EQ(revisions[0].changes.at(0).running, "501");
}

TEST_F(HistoryOfAgent, ThatCannotBeWrittenKeepsNoSaveFromSucceeding) {
  std::filesystem::create_directories(stateDir + "/history.1/in-the-way");
  start();
  EXPECT_THAT(state(), HasSubstr("history.1 cannot be used: it is not a regular file"));
  std::filesystem::create_directories(stateDir + "/history.3/in-the-way");
  const BridgeClient client = connect();
  set(client, "IKE.IKE_PORT", "501");
  const auto reply = client.call("save", bridge::encode(bridge::SaveRequest{}));
  EXPECT_EQ(reply.result, 1);
  EXPECT_EQ(reply.output, std::string(8, '\0')) << "no revision";
  EXPECT_THAT(host::readFile(settingsPath), HasSubstr("IKE_PORT=501\n"));
  EXPECT_THAT(state(), HasSubstr("history.3 cannot be replaced"));
  EXPECT_TRUE(agent->waitForLog("the settings are saved, but the history lacks it"));
  set(client, "IKE.IKE_PORT", "502");
  save(client, "again");
  EXPECT_THAT(state(), HasSubstr("\"history\":4"));
}

TEST_F(HistoryOfAgent, HasTheSaveAtTheEnd) {
  flags = {"--save-on-exit"};
  start();
  set(connect(), "IKE.IKE_PORT", "501");
  stop(SIGTERM);
  start();
  EXPECT_EQ(messages().at(0), "saved at the agent's end");
}

}  // namespace
}  // namespace system_testing
