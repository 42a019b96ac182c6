// The bridge commands: their framing, their authorisation and what they answer.
#include <gmock/gmock.h>

#include <climits>
#include <thread>

#include "tests/catalogue/expected_groups.h"
#include "tests/module/call_log.h"
#include "tests/module/loaded_module.h"
#include "tests/module/scripted_param.h"
#include "tests/support/readable_bytes.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing_support::inQuotes;
using testing_support::unhex;

namespace host {
namespace {

using LPARAMS::Server::expectedGroup;
using LPARAMS::Server::initially;
using LPARAMS::Server::initiallyBut;

const std::string ERROR = "CommandStreamError";

class Command : public ModuleTest {};

TEST_F(Command, ReadingAGroupAppendsItsRecordToTheReply) {
  BridgeSession session;
  std::string out = "before";
  EXPECT_EQ(platform().listener->ExecCommand(session, READ_GROUP, framed("ADMIN"), out), 1);
  EXPECT_EQ(out, "before" + expectedGroup("ADMIN").record(initially));
}

TEST_F(Command, ReadingAGroupAsksForNoAuthorisation) {
  platform().authorised = false;
  CommandResult reply;
  EXPECT_THAT(callsDuring([&] { reply = execute(READ_GROUP, framed("IKE")); }), IsEmpty());
  EXPECT_EQ(reply.result, 1);
}

TEST_F(Command, EveryMemberOfTheRootIsReadByItsName) {
  for (const char* name : {"IKE", "LOG", "UPDATE", "POLICY", "ADMIN", "USERS"}) {
    const CommandResult reply = execute(READ_GROUP, framed(name));
    EXPECT_EQ(reply.result, 1) << name;
    EXPECT_FALSE(reply.output.empty()) << name;
  }
}

TEST_F(Command, TheUserListIsAGroupLikeAnyOther) {
  EXPECT_EQ(execute(READ_GROUP, framed("USERS")).output, unhex("00 00 00 00"));
  EXPECT_EQ(execute(WRITE_GROUP, framed("USERS", unhex("00 00 00 00"))).result, 1);
}

TEST_F(Command, WhatIsNoMemberOfTheRootIsNoGroup) {
  for (const std::string& name :
       {std::string("ROOT"), std::string("USER"), std::string("ike"), std::string("IKE "),
        std::string("IKE\0", 4), std::string("LOG_LEVEL"), std::string("/IKE"), std::string()}) {
    for (const long command : {READ_GROUP, WRITE_GROUP}) {
      const CommandResult reply = execute(command, framed(name));
      EXPECT_EQ(reply.result, 0) << name;
      EXPECT_EQ(reply.output + reply.thrown, "") << name;
    }
  }
}

TEST_F(Command, AFrameThatIsTooShortIsThrownBack) {
  const std::string inputs[] = {
      "",
      unhex("01"),
      unhex("01 00 00"),
      unhex("01 00 00 00"),
      unhex("03 00 00 00") + "IK",
      unhex("04 00 00 00") + "IKE",
      unhex("FF FF FF 7F") + "IKE",
      unhex("00 00 00 80") + "IKE",
      unhex("F8 FF FF FF") + "IKE",
      // From here on the end of the name, counted in 32 bits, lies before its beginning.
      unhex("FC FF FF FF") + "IKE",
      unhex("FD FF FF FF") + "IKE",
      unhex("FE FF FF FF") + "IKE",
      unhex("FF FF FF FF") + "IKE",
  };
  for (const std::string& input : inputs) {
    for (const long command : {READ_GROUP, WRITE_GROUP}) {
      const CommandResult reply = execute(command, input);
      EXPECT_EQ(reply.thrown, ERROR) << command << " " << inQuotes(input);
      EXPECT_EQ(reply.output, "");
    }
  }
}

TEST_F(Command, ARefusedWriteReadsNothingAndThrowsNothing) {
  platform().authorised = false;
  for (const std::string& input : {std::string("\1\0\0", 3), framed("ADMIN", "x")}) {
    const CommandResult reply = execute(WRITE_GROUP, input);
    EXPECT_EQ(reply.result, 0);
    EXPECT_EQ(reply.thrown, "");
  }
  EXPECT_EQ(root().ADMIN->SESSION_EXPTIME.value, 10u);
}

TEST_F(Command, AWriteIsAuthorisedBeforeItsInputIsRead) {
  CommandResult reply;
  EXPECT_THAT(callsDuring([&] { reply = execute(WRITE_GROUP, "abc"); }),
              ElementsAre("authorise session 0 for module 13 at level 0"));
  EXPECT_EQ(reply.thrown, ERROR);
}

TEST_F(Command, AuthorisationIsAskedForTheSessionThatSentTheCommand) {
  BridgeSession session;
  session.number = 7;
  EXPECT_THAT(callsDuring([&] { (void)execute(session, WRITE_GROUP, framed("NONE")); }),
              ElementsAre("authorise session 7 for module 13 at level 0"));
}

TEST_F(Command, UnknownCommandsAreRefusedWithoutAuthorisation) {
  for (const long command : {5L, 3L, -1L, 13L, LONG_MAX, LONG_MIN}) {
    CommandResult reply;
    EXPECT_THAT(callsDuring([&] { reply = execute(command, framed("IKE")); }), IsEmpty());
    EXPECT_EQ(reply.result, 0) << command;
    EXPECT_EQ(reply.output + reply.thrown, "") << command;
  }
}

TEST_F(Command, WritingAGroupAnswersNothing) {
  const CommandResult reply =
      execute(WRITE_GROUP, framed("ADMIN", expectedGroup("ADMIN").record(initiallyBut(
                                               {{"SESSION_EXPTIME", {"", "01 00 00 00"}},
                                                {"LOGIN_ON_SAVE_TOKEN_PASSWORD", {"", "00"}},
                                                {"ADMIN_GROUP", {"", "02 00 00 00 78 79"}}}))));
  EXPECT_EQ(reply.result, 1);
  EXPECT_EQ(reply.output, "");
  EXPECT_EQ(root().ADMIN->SESSION_EXPTIME.value, 1u);
  EXPECT_FALSE(root().ADMIN->LOGIN_ON_SAVE_TOKEN_PASSWORD.value);
  EXPECT_EQ(root().ADMIN->ADMIN_GROUP.value, "xy");
}

TEST_F(Command, BytesBehindACompleteRecordAreIgnored) {
  const std::string record = execute(READ_GROUP, framed("ADMIN")).output;
  EXPECT_EQ(execute(WRITE_GROUP, framed("ADMIN", record + "more")).result, 1);
}

TEST_F(Command, EveryStrictPrefixOfARecordIsThrownBack) {
  for (const char* name : {"IKE", "LOG", "UPDATE", "POLICY", "ADMIN", "USERS"}) {
    const std::string record = execute(READ_GROUP, framed(name)).output;
    for (size_t length = 0; length < record.size(); ++length) {
      const CommandResult reply = execute(WRITE_GROUP, framed(name, record.substr(0, length)));
      EXPECT_EQ(reply.thrown, ERROR) << name << " " << length;
    }
  }
}

TEST_F(Command, AWriteThatBreaksOffLeavesTheMembersReadSoFarChanged) {
  const std::string record = unhex("63 00 00 00  00  02 00 00 00") + "x";
  EXPECT_EQ(execute(WRITE_GROUP, framed("ADMIN", record)).thrown, ERROR);
  EXPECT_EQ(root().ADMIN->SESSION_EXPTIME.value, 99u);
  EXPECT_FALSE(root().ADMIN->LOGIN_ON_SAVE_TOKEN_PASSWORD.value);
  EXPECT_EQ(root().ADMIN->ADMIN_GROUP.value, "admin");
}

TEST_F(Command, AThrownCommandHoldsNoLock) {
  (void)execute(WRITE_GROUP, framed("ADMIN", "abc"));
  (void)execute(READ_GROUP, "abc");
  CommandResult reply;
  std::thread([&] { reply = execute(READ_GROUP, framed("ADMIN")); }).join();
  EXPECT_EQ(reply.result, 1);
}

TEST_F(Command, AMemberThatFailsToWriteFailsTheRead) {
  ScriptedParam last(*root().ADMIN);
  last.onWrite = [] { return false; };
  EXPECT_EQ(execute(READ_GROUP, framed("ADMIN")).result, 0);
}

TEST_F(Command, AMemberThatFailsToReadFailsTheWrite) {
  ScriptedParam last(*root().ADMIN);
  last.onRead = [] { return false; };
  const std::string record = execute(READ_GROUP, framed("ADMIN")).output;
  EXPECT_EQ(execute(WRITE_GROUP, framed("ADMIN", record)).result, 0);
}

}  // namespace
}  // namespace host
