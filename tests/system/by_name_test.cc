// Single parameters by their names, from the socket to the settings file.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <string>

#include "bridge/named_values.h"
#include "tests/module/child_process.h"
#include "tests/support/another_user.h"
#include "tests/system/system_test.h"

using bridge::Change;
using bridge::NamedChanges;
using bridge::NamedValues;
using bridge::Reason;
using testing::HasSubstr;

namespace system_testing {
namespace {

class ByName : public SystemTest {
 protected:
  static bridge::Reply get(const BridgeClient& client, const bridge::Names& names) {
    return client.call("get", bridge::encode(names));
  }
  static bridge::Reply set(const BridgeClient& client, const NamedChanges& changes) {
    return client.call("set", bridge::encode(changes));
  }
  static bridge::NamedValue valueOf(const BridgeClient& client, const std::string& name) {
    return bridge::decodeNamedValues(get(client, {name}).output).value().values.at(0);
  }
};

TEST_F(ByName, ChangesOfManyGroupsAreSavedAndLoaded) {
  start();
  {
    const BridgeClient client = connect();
    const bridge::Reply reply = set(client, {{},
                                             {{Change::Set, "IKE.DPD_IDLE_TIME", "77"},
                                              {Change::Set, "LOG.WALL_ON", "0"},
                                              {Change::AddUser, "bob"},
                                              {Change::Set, "USERS[bob].PMP_TIMEOUT", "20"}}});
    EXPECT_EQ(reply.result, 1) << reply.text;
    EXPECT_EQ(valueOf(client, "LOG.WALL_ON").saved, "1");
    EXPECT_EQ(client.save().result, 1);
    EXPECT_EQ(valueOf(client, "LOG.WALL_ON").saved, "0");
    EXPECT_EQ(valueOf(client, "USERS[bob].PMP_TIMEOUT").saved, "20");
  }
  stop();
  EXPECT_THAT(host::readFile(settingsPath), HasSubstr("DPD_IDLE_TIME=77\n"));

  start();
  const BridgeClient client = connect();
  for (const auto& [name, value] : {std::pair("IKE.DPD_IDLE_TIME", "77"),
                                    {"LOG.WALL_ON", "0"},
                                    {"USERS[bob].PMP_TIMEOUT", "20"}}) {
    EXPECT_EQ(valueOf(client, name).running, value) << name;
    EXPECT_EQ(valueOf(client, name).saved, value) << name;
  }
}

TEST_F(ByName, TheRulesHoldWithAcceptAnyToo) {
  flags = {"--accept-any"};
  start();
  const BridgeClient client = connect();
  const bridge::Reply reply = set(client, {{}, {{Change::Set, "IKE.IKE_PORT", "0"}}});
  EXPECT_EQ(reply.reason, Reason::IllegalValue);
  EXPECT_EQ(reply.text, "IKE.IKE_PORT: \"0\" is not a whole number from 1 to 65535");
}

TEST_F(ByName, GarbageIsRefusedAndTheSessionGoesOn) {
  start();
  const BridgeClient client = connect();
  for (const char* command : {"get", "set"}) {
    for (const std::string& input :
         {std::string("\xff"), std::string(4, '\xff'), std::string(1000, '\x01')}) {
      const bridge::Reply reply = client.call(command, input);
      EXPECT_EQ(reply.reason, Reason::MalformedInput) << command;
      EXPECT_EQ(reply.output, "");
    }
  }
  EXPECT_EQ(client.read("IKE").result, 1);
}

TEST_F(ByName, AnotherUserReadsAllButSecretsAndWritesNothing) {
  if (const auto reason = testing_support::whyNoOtherUser(); !reason.empty()) {
    GTEST_SKIP() << reason;
  }
  start({{"--admin-group", "no-such-group"}});
  ASSERT_EQ(chmod(directory.path.c_str(), 0755), 0);
  ASSERT_EQ(chmod(socketPath.c_str(), 0666), 0);
  ASSERT_EQ(set(connect(), {{}, {{Change::Set, "IKE.QCD_SECRET", "s3cret"}}}).result, 1);

  host::runInChild([&] {
    testing_support::dropRights();
    const BridgeClient client = connect();
    EXPECT_EQ(valueOf(client, "IKE.IKE_PORT").running, "500");
    EXPECT_EQ(valueOf(client, "IKE.QCD_SECRET"),
              (bridge::NamedValue{.name = "IKE.QCD_SECRET", .secret = true}));
    EXPECT_EQ(get(client, {}).output.find("s3cret"), std::string::npos);
    const bridge::Reply record = client.read("IKE");
    EXPECT_EQ(record.output.find("s3cret"), std::string::npos);
    EXPECT_THAT(record.text, HasSubstr("IKE.QCD_SECRET"));
    EXPECT_EQ(set(client, {{}, {{Change::Set, "IKE.IKE_PORT", "501"}}}).reason,
              Reason::NotAuthorised);
  });
  EXPECT_EQ(valueOf(connect(), "IKE.IKE_PORT").running, "500");
}

}  // namespace
}  // namespace system_testing
