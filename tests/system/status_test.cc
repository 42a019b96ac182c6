// The agent's state, for programs.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <nlohmann/json.hpp>
#include <string>

#include "bridge/named_values.h"
#include "tests/module/child_process.h"
#include "tests/support/another_user.h"
#include "tests/system/system_test.h"
#include "text/hash.h"

using bridge::Change;
using nlohmann::json;
using testing::MatchesRegex;

namespace system_testing {
namespace {

constexpr const char* HASH = "[0-9a-f]+";

class Status : public SystemTest {
 protected:
  json status() const {
    const BridgeClient client = connect();
    client.send(bridge::encode(bridge::StatusRequest{}));
    return json::parse(client.receiveReply().output);
  }

  void set(const std::vector<Change>& steps) const {
    EXPECT_EQ(connect().call("set", bridge::encode(bridge::NamedChanges{{}, steps})).result, 1);
  }
  void save() const { EXPECT_EQ(connect().save().result, 1); }

  /// The four hashes of a new agent with the settings file.
  std::vector<json> hashesWith(const std::string& file) {
    host::writeFile(settingsPath, file);
    start();
    const json state = status();
    EXPECT_EQ(state["degraded"], nullptr);
    stop();
    for (const char* copy : {".good", ".bak"}) (void)::unlink((settingsPath + copy).c_str());
    return {state["savedHash"], state["runningHash"], state["savedHashWithSecrets"],
            state["runningHashWithSecrets"]};
  }
};

TEST_F(Status, CountsWhatHappens) {
  start();
  json state = status();
  for (const char* name : {"writes", "saves", "failedSaves", "refusals", "watchers"}) {
    EXPECT_EQ(state[name], 0) << name;
  }
  EXPECT_THAT(state["startTime"].get<std::string>(), MatchesRegex("20..-..-..T..:..:..Z"));
  EXPECT_GE(state["uptime"], 0);
  EXPECT_EQ(state["sessions"], 1);

  const BridgeClient watching = connect();
  EXPECT_EQ(watching.call("watch", "").result, 1);
  set({{Change::Set, "LOG.WALL_ON", "0"}, {Change::Set, "IKE.IKE_PORT", "501"}});
  EXPECT_EQ(connect().call("set", "garbage").result, 0);
  save();
  host::writeFile(settingsPath, "edited");
  EXPECT_EQ(connect().save().result, 0);
  state = status();
  EXPECT_EQ(state["writes"], 2);
  EXPECT_EQ(state["saves"], 1);
  EXPECT_EQ(state["failedSaves"], 1);
  EXPECT_EQ(state["refusals"], 2);
  EXPECT_EQ(state["watchers"], 1);
}

TEST_F(Status, HasEqualHashesForEqualSettings) {
  start();
  set({{Change::Set, "IKE.DPD_IDLE_TIME", "77"}, {Change::AddUser, "anna"}});
  const json unsaved = status();
  EXPECT_NE(unsaved["savedHash"], unsaved["runningHash"]);
  save();
  const json saved = status();
  EXPECT_EQ(saved["savedHash"], unsaved["runningHash"]);
  EXPECT_EQ(saved["runningHash"], unsaved["runningHash"]);
  EXPECT_THAT(saved["savedHash"].get<std::string>(), MatchesRegex(HASH));
  stop();

  const std::string file = host::readFile(settingsPath);
  std::string respelled = file;
  respelled.replace(respelled.find("DPD_IDLE_TIME=77"), 16, "  DPD_IDLE_TIME= 077");
  const size_t log = respelled.find("    /LOG=");
  const std::string group = respelled.substr(log, respelled.find("    /UPDATE=") - log);
  respelled.erase(log, group.size());
  respelled.insert(respelled.find("    /IKE="), group);
  EXPECT_NE(respelled, file);
  (void)::unlink((settingsPath + ".good").c_str());
  const auto hashes = hashesWith(file);
  EXPECT_EQ(hashes[0], saved["savedHash"]);
  EXPECT_EQ(hashesWith(respelled), hashes);

  std::string other = file;
  other.replace(other.find("WALL_ON=1"), 9, "WALL_ON=0");
  EXPECT_NE(hashesWith(other)[0], hashes[0]);
}

// As docs/bridge-protocol.md says how to make one.
TEST_F(Status, HasAHashThatOthersCanMakeOfTheValues) {
  start();
  set({{Change::AddUser, "anna"},
       {Change::AddUser, "b]."},
       {Change::Set, "IKE.QCD_SECRET", "sesame"}});
  const auto all = bridge::decodeNamedValues(connect().call("get", "").output).value();
  std::string open;
  std::string whole;
  for (const bridge::NamedValue& value : all.values) {
    const std::string line = value.name.substr(0, value.name.find_first_of(".[")) +
                             value.name.substr(value.name.rfind('.')) + "=" +
                             std::to_string(value.running->size()) + ":" + *value.running + "\n";
    whole += line;
    if (!value.secret) open += line;
  }
  const json state = status();
  EXPECT_EQ(state["runningHash"], text::hashOf(open));
  EXPECT_EQ(state["runningHashWithSecrets"], text::hashOf(whole));
}

TEST_F(Status, HasSecretsInOneOfTheHashes) {
  start();
  const json before = status();
  set({{Change::Set, "IKE.QCD_SECRET", "sesame"}});
  const json after = status();
  EXPECT_EQ(after["runningHash"], before["runningHash"]);
  EXPECT_NE(after["runningHashWithSecrets"], before["runningHashWithSecrets"]);
  EXPECT_EQ(after["savedHashWithSecrets"], before["savedHashWithSecrets"]);
}

TEST_F(Status, KeepsTheHashWithSecretsFromWhoMayNotWrite) {
  if (const auto reason = testing_support::whyNoOtherUser(); !reason.empty()) {
    GTEST_SKIP() << reason;
  }
  start({{"--admin-group", "no-such-group"}});
  ASSERT_EQ(chmod(directory.path.c_str(), 0755), 0);
  ASSERT_EQ(chmod(socketPath.c_str(), 0666), 0);
  const json own = status();
  EXPECT_TRUE(own.contains("runningHashWithSecrets"));
  host::runInChild([&] {
    testing_support::dropRights();
    const json state = status();
    EXPECT_EQ(state["runningHash"], own["runningHash"]);
    EXPECT_EQ(state["savedHash"], own["savedHash"]);
    EXPECT_FALSE(state.contains("savedHashWithSecrets"));
    EXPECT_FALSE(state.contains("runningHashWithSecrets"));
  });
}

}  // namespace
}  // namespace system_testing
