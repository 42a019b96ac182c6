// What becomes of commands, good and bad.
#include <gmock/gmock.h>

#include <string>

#include "lparams/catalogue/admin_group.h"
#include "tests/support/param_forms.h"
#include "tests/support/readable_bytes.h"
#include "tests/system/system_test.h"

using bridge::Reason;
using LPARAMS::Server::ADMIN_t;
using testing::HasSubstr;
using testing_support::inQuotes;
using testing_support::wireBytes;

namespace system_testing {
namespace {

constexpr const char* GROUPS[] = {"IKE", "LOG", "UPDATE", "POLICY", "ADMIN", "USERS"};

/// The agent takes what the module takes; what it checks before has tests of its own.
class Commands : public SystemTest {
 protected:
  void SetUp() override {
    flags = {"--accept-any"};
    start();
  }

  static std::string adminRecord(unsigned expiry, const std::string& group) {
    ADMIN_t admin;
    admin.SESSION_EXPTIME.value = expiry;
    admin.ADMIN_GROUP.value = group;
    return wireBytes(admin);
  }
};

TEST_F(Commands, ReadAndWriteEveryGroup) {
  const BridgeClient client = connect();
  for (const char* group : GROUPS) {
    const bridge::Reply before = client.read(group);
    EXPECT_EQ(before.result, 1) << group;
    EXPECT_EQ(before.reason, Reason::None) << group;
    EXPECT_EQ(before.text, "") << group;

    const bridge::Reply written = client.write(group, before.output);
    EXPECT_EQ(written.result, 1) << group;
    EXPECT_EQ(written.output, "") << group;
    EXPECT_EQ(client.read(group).output, before.output) << group;
  }
}

TEST_F(Commands, OfOneSessionAreSeenByTheOthers) {
  const BridgeClient writer = connect();
  const BridgeClient reader = connect();
  const std::string record = adminRecord(42, "others");
  EXPECT_EQ(writer.write("ADMIN", record).result, 1);
  EXPECT_EQ(reader.read("ADMIN").output, record);
}

TEST_F(Commands, MayCarryMoreThanTheirRecord) {
  const BridgeClient client = connect();
  const std::string record = adminRecord(42, "others");
  EXPECT_EQ(client.write("ADMIN", record + "more").result, 1);
  EXPECT_EQ(client.read("ADMIN").output, record);
  EXPECT_EQ(client.call({SETTINGS_MODULE, SAVE, "ignored"}).result, 1);
}

TEST_F(Commands, ForAModuleThatIsNotLoaded) {
  const BridgeClient client = connect();
  for (const int32_t module : {0, 12, 14, -1, INT32_MAX, INT32_MIN}) {
    const bridge::Reply reply = client.call({module, READ_GROUP, groupInput("ADMIN")});
    EXPECT_EQ(reply.result, 0) << module;
    EXPECT_EQ(reply.reason, Reason::NoSuchModule) << module;
    EXPECT_EQ(reply.text, "no module " + std::to_string(module) + " is loaded");
  }
}

TEST_F(Commands, ThatTheModuleDoesNotKnowOrWhoseGroupItDoesNotKnow) {
  const BridgeClient client = connect();
  const bridge::Command rows[] = {
      {SETTINGS_MODULE, 3, {}},
      {SETTINGS_MODULE, -1, {}},
      {SETTINGS_MODULE, INT32_MAX, groupInput("ADMIN")},
      {SETTINGS_MODULE, READ_GROUP, groupInput("ROOT")},
      {SETTINGS_MODULE, READ_GROUP, groupInput("")},
      {SETTINGS_MODULE, READ_GROUP, groupInput("admin")},
      {SETTINGS_MODULE, READ_GROUP, groupInput("USER")},
      {SETTINGS_MODULE, WRITE_GROUP, groupInput("NONE")},
  };
  for (const bridge::Command& command : rows) {
    const bridge::Reply reply = client.call(command);
    EXPECT_EQ(reply.result, 0) << inQuotes(command.input);
    EXPECT_EQ(reply.reason, Reason::ModuleRefused) << inQuotes(command.input);
    EXPECT_THAT(reply.text, HasSubstr("does not know this command or its subject"));
    EXPECT_EQ(reply.output, "") << inQuotes(command.input);
  }
}

TEST_F(Commands, WhoseInputIsCutOffAreMalformed) {
  const BridgeClient client = connect();
  const std::string name = groupInput("ADMIN");
  const std::string whole = groupInput("ADMIN", adminRecord(42, "others"));
  const auto expectMalformed = [&](int32_t command, const std::string& input) {
    const bridge::Reply reply = client.call({SETTINGS_MODULE, command, input});
    EXPECT_EQ(reply.result, 0) << inQuotes(input);
    EXPECT_EQ(reply.reason, Reason::MalformedInput) << inQuotes(input);
    EXPECT_EQ(reply.text, "the module could not read the command to its end: CommandStreamError");
    EXPECT_EQ(reply.output, "") << inQuotes(input);
  };
  for (size_t size = 0; size < name.size(); ++size)
    expectMalformed(READ_GROUP, name.substr(0, size));
  for (size_t size = 0; size < whole.size(); ++size) {
    expectMalformed(WRITE_GROUP, whole.substr(0, size));
  }
  expectMalformed(READ_GROUP,
                  "\xFF\xFF\xFF\xFF"
                  "ADMIN");
  expectMalformed(READ_GROUP,
                  "\xFB\xFF\xFF\xFF"
                  "ADMIN");
}

TEST_F(Commands, ThatBreakOffLeaveWhatWasReadOfThem) {
  const BridgeClient client = connect();
  const std::string record = adminRecord(42, "others");
  EXPECT_EQ(client.write("ADMIN", record.substr(0, 4)).reason, Reason::MalformedInput);
  EXPECT_EQ(client.read("ADMIN").output, adminRecord(42, "admin"));
}

TEST_F(Commands, WithAbsurdCountsDoNotExhaustTheAgent) {
  const BridgeClient client = connect();
  EXPECT_EQ(client.write("USERS", "\xFF\xFF\xFF\xFF").reason, Reason::MalformedInput);
  EXPECT_EQ(client
                .write("USERS",
                       "\xFF\xFF\xFF\xFF"
                       "\xFF\xFF\xFF\xFF")
                .reason,
            Reason::MalformedInput);
  EXPECT_EQ(client.write("USERS", std::string(4, '\0')).result, 1);
}

}  // namespace
}  // namespace system_testing
