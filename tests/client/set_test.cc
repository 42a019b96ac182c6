// The commands "set" and "save", as a user runs them.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "client/settings.h"
#include "tests/catalogue/expected_groups.h"
#include "tests/client/client_process.h"
#include "tests/client/scripted_agent.h"
#include "tests/support/param_forms.h"
#include "tests/support/readable_bytes.h"

namespace client_testing {
namespace {

using namespace LPARAMS::Server;

using client::Settings;
using testing_support::hex;
using testing_support::unhex;
using testing_support::wireBytes;
using Commands = std::vector<std::string>;

/// Runs "set" with the agent's socket.
Outcome runSet(const ScriptedAgent& agent, std::vector<std::string> assignments,
               const Surroundings& surroundings = {}) {
  assignments.insert(assignments.begin(), {"--socket", agent.socketPath, "set"});
  return runClient(assignments, surroundings);
}

/// The record of ADMIN, at its defaults but for these, in hexadecimal pairs.
std::string admin(const std::map<std::string, Forms>& others = {}) {
  return hex(expectedGroup("ADMIN").record(initiallyBut(others)));
}

const std::string ADMIN_RECORD = admin();

TEST(ClientSet, WritesTheGroupWithTheNewValue) {
  ScriptedAgent agent({done(unhex(ADMIN_RECORD)), done()});
  EXPECT_EQ(runSet(agent, {"ADMIN.ADMIN_GROUP=ops team"}), printed(""));
  EXPECT_EQ(agent.commands(),
            (Commands{"read ADMIN",
                      "write ADMIN " +
                          admin({{"ADMIN_GROUP", {"", "08 00 00 00 6F 70 73 20 74 65 61 6D"}}})}));
}

TEST(ClientSet, WritesEveryGroupOnceInTheOrderGiven) {
  Settings settings;
  ScriptedAgent agent(
      {done(wireBytes(settings.logGroup)), done(unhex(ADMIN_RECORD)), done(), done()});
  EXPECT_EQ(runSet(agent, {"LOG.FACILITY=3", "ADMIN.SESSION_EXPTIME=1", "LOG.FACILITY=7",
                           "LOG.LANGUAGE=log_lang_rus"}),
            printed(""));
  settings.logGroup.FACILITY.value = 7;
  settings.logGroup.LANGUAGE.value = 1;
  EXPECT_EQ(agent.commands(),
            (Commands{"read LOG", "read ADMIN", "write LOG " + hex(wireBytes(settings.logGroup)),
                      "write ADMIN " + admin({{"SESSION_EXPTIME", {"", "01 00 00 00"}}})}));
}

TEST(ClientSet, LeavesValuesAloneThatTheBridgeDidNotCheck) {
  Settings settings;
  settings.logGroup.LOG_LEVEL.value = 7;
  settings.logGroup.BACKUP_DEPTH.value = 4294967295U;
  ScriptedAgent agent({done(wireBytes(settings.logGroup)), done()});
  EXPECT_EQ(runSet(agent, {"LOG.WALL_ON=false"}), printed(""));
  settings.logGroup.WALL_ON.value = false;
  EXPECT_EQ(agent.commands(),
            (Commands{"read LOG", "write LOG " + hex(wireBytes(settings.logGroup))}));
}

TEST(ClientSet, ChangesAnEntryOfTheUserList) {
  Settings settings;
  listAdd(settings.userList)->NAME.value = "anna";
  auto* const boris = listAdd(settings.userList);
  ScriptedAgent agent({done(wireBytes(settings.userList)), done()});
  EXPECT_EQ(runSet(agent, {"USERS[1].NAME=boris", "USERS[1].PMP_TIMEOUT=20"}), printed(""));
  boris->NAME.value = "boris";
  boris->PMP_TIMEOUT.value = 20;
  EXPECT_EQ(agent.commands(),
            (Commands{"read USERS", "write USERS " + hex(wireBytes(settings.userList))}));
}

TEST(ClientSet, OneMistakeAndNothingIsAskedOrWritten) {
  const struct {
    const char* mistake;
    const char* message;
  } ROWS[] = {
      {"IKE.IKE_PORT=0", "IKE.IKE_PORT: \"0\" is not a whole number from 1 to 65535"},
      {"IKE.IKE_PORT", "an assignment has no \"=\"; write NAME=VALUE"},
      {"IKE.DPD_IDLE_TIME=1",
       "IKE.DPD_IDLE_TIME stays in the settings file: the bridge does not carry it"},
      {"FOO.BAR=1",
       "there is no group \"FOO\"; the groups are IKE, LOG, UPDATE, POLICY, ADMIN, USERS"},
      {"USERS[7].PMP_TIMEOUT=4",
       "USERS[7].PMP_TIMEOUT: \"4\" is not a whole number from 5 to 4294967295"},
      {"IKE.QCD_SECRET=s3\ncret",
       "IKE.QCD_SECRET: the value is not one line of text without control characters"},
  };
  for (const auto& row : ROWS) {
    ScriptedAgent agent({done(unhex(ADMIN_RECORD)), done()});
    EXPECT_EQ(runSet(agent, {"ADMIN.SESSION_EXPTIME=1", row.mistake}), failed(2, row.message));
    EXPECT_FALSE(agent.wasReached());
  }
}

TEST(ClientSet, MissingEntryIsFoundBeforeAnythingIsWritten) {
  Settings settings;
  ScriptedAgent agent({done(unhex(ADMIN_RECORD)), done(wireBytes(settings.userList)), done()});
  EXPECT_EQ(runSet(agent, {"ADMIN.SESSION_EXPTIME=1", "USERS[0].NAME=anna"}),
            failed(2, "there is no USERS[0]; entries in the list, counted from 0: 0"));
  EXPECT_EQ(agent.commands(), (Commands{"read ADMIN", "read USERS"}));
}

TEST(ClientSet, RefusedGroupIsNotWritten) {
  ScriptedAgent agent({done(unhex(ADMIN_RECORD)),
                       refused("the session may not write", bridge::Reason::NotAuthorised)});
  EXPECT_EQ(runSet(agent, {"ADMIN.SESSION_EXPTIME=1"}),
            failed(1, "writing ADMIN failed: the session may not write; not written: ADMIN"));
}

TEST(ClientSet, RefusalAmongSeveralGroupsTellsWhichAreWritten) {
  Settings settings;
  ScriptedAgent agent({done(wireBytes(settings.ikeGroup)), done(unhex(ADMIN_RECORD)),
                       done(wireBytes(settings.logGroup)), done(), refused("no\nentry")});
  EXPECT_EQ(
      runSet(agent, {"IKE.IKE_PORT=501", "ADMIN.SESSION_EXPTIME=1", "LOG.WALL_ON=0"}),
      failed(1, R"(writing ADMIN failed: no\x0aentry; written: IKE; not written: ADMIN, LOG)"));
}

TEST(ClientSet, LostReplyTellsThatTheGroupMayBeWritten) {
  Settings settings;
  ScriptedAgent agent({done(wireBytes(settings.ikeGroup)), done(unhex(ADMIN_RECORD)),
                       done(wireBytes(settings.logGroup)), done()});
  EXPECT_EQ(runSet(agent, {"IKE.IKE_PORT=501", "ADMIN.SESSION_EXPTIME=1", "LOG.WALL_ON=0"}),
            failed(3, "the agent at " + agent.socketPath +
                          " closed the connection; written: IKE; perhaps written: ADMIN; "
                          "not written: LOG"));
}

TEST(ClientSet, TakesAssignmentsFromTheStandardInput) {
  ScriptedAgent agent({done(unhex(ADMIN_RECORD)), done()});
  EXPECT_EQ(
      runSet(agent, {"-"}, {.in = "# a comment\n\nADMIN.ADMIN_GROUP= #=\nADMIN.SESSION_EXPTIME=2"}),
      printed(""));
  EXPECT_EQ(agent.commands(),
            (Commands{"read ADMIN",
                      "write ADMIN " + admin({{"SESSION_EXPTIME", {"", "02 00 00 00"}},
                                              {"ADMIN_GROUP", {"", "03 00 00 00 20 23 3D"}}})}));
}

TEST(ClientSet, NothingToDoIsNoError) {
  ScriptedAgent agent({done()});
  EXPECT_EQ(runSet(agent, {"-"}, {.in = "# nothing\n"}), printed(""));
  EXPECT_FALSE(agent.wasReached());
}

TEST(ClientSet, TakesBackWhatShowPrints) {
  Settings settings;
  settings.ikeGroup.QCD_SECRET.value = "s3cret";
  settings.policyGroup.PMP_SERVERS.value = R"( a, b=c "d" \x0a )";
  settings.policyGroup.PSK_NAME.value = "two\nlines";
  listAdd(settings.userList)->NAME.value = "anna";
  std::vector<bridge::Reply> reads;
  Commands expected;
  for (auto* group : settings.groups()) {
    reads.push_back(done(wireBytes(*group)));
    expected.push_back(std::string("read ") + group->name);
  }
  ScriptedAgent shown(reads);
  const Outcome show = runClient({"--socket", shown.socketPath, "show"});
  EXPECT_EQ(show.exitCode, 0);

  std::vector<bridge::Reply> replies = reads;
  for (auto* group : settings.groups()) {
    replies.push_back(done());
    expected.push_back(std::string("write ") + group->name + " " + hex(wireBytes(*group)));
  }
  ScriptedAgent agent(replies);
  EXPECT_EQ(runSet(agent, {"-"}, {.in = show.out}), printed(""));
  EXPECT_EQ(agent.commands(), expected);
}

TEST(ClientSet, CommandThatIsTooLongForTheBridgeIsNotSent) {
  ScriptedAgent agent({done(unhex(ADMIN_RECORD)), done()});
  const std::string longText(bridge::MAX_FRAME_SIZE, 'x');
  EXPECT_EQ(runSet(agent, {"-"}, {.in = "ADMIN.ADMIN_GROUP=" + longText}),
            failed(1,
                   "the command is longer than the 16777216 bytes that the bridge takes; "
                   "not written: ADMIN"));
  EXPECT_EQ(agent.commands(), Commands{"read ADMIN"});
}

TEST(ClientSave, SaysThatItIsDone) {
  ScriptedAgent agent({done()});
  EXPECT_EQ(runClient({"--socket", agent.socketPath, "save"}), printed("saved\n"));
  EXPECT_EQ(agent.commands(), Commands{"save"});
}

TEST(ClientSave, SaysWhyItIsNot) {
  ScriptedAgent agent({refused("write failed: /var/lib/x.bak")});
  EXPECT_EQ(runClient({"--socket", agent.socketPath, "save"}),
            failed(1, "saving failed: write failed: /var/lib/x.bak"));
}

TEST(ClientSave, RefusalWithoutWordsHasItsNumber) {
  ScriptedAgent agent({refused("", bridge::Reason::NotAuthorised)});
  EXPECT_EQ(runClient({"--socket", agent.socketPath, "save"}),
            failed(1, "saving failed: the agent gave no reason (2)"));
}

}  // namespace
}  // namespace client_testing
