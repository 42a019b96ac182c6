// The commands "show" and "get", as a user runs them.
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
using testing_support::wireBytes;
using Commands = std::vector<std::string>;

std::string ikeWithSecret() {
  Settings settings;
  settings.ikeGroup.QCD_SECRET.value = "s3cret";
  return wireBytes(settings.ikeGroup);
}

/// What is shown of a group, at its defaults but for these.
std::string shown(const char* group, const std::map<std::string, Forms>& others = {}) {
  return expectedGroup(group).shown(group, initiallyBut(others));
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  return text.replace(text.find(from), from.size(), to);
}

std::string shownIke(const char* secret) { return shown("IKE", {{"QCD_SECRET", {secret, ""}}}); }

TEST(ClientShow, PrintsOneGroup) {
  Settings settings;
  ScriptedAgent agent({done(wireBytes(settings.logGroup))});
  EXPECT_EQ(runClient({"--socket", agent.socketPath, "show", "LOG"}), printed(shown("LOG")));
  EXPECT_EQ(agent.commands(), Commands{"read LOG"});
}

TEST(ClientShow, HidesSecretsAndLeavesOutWhatStaysInTheFile) {
  ScriptedAgent agent({done(ikeWithSecret())});
  EXPECT_EQ(runClient({"--socket", agent.socketPath, "show", "IKE"}),
            printed(shownIke("(hidden)")));
}

TEST(ClientShow, PrintsSecretsIfToldTo) {
  ScriptedAgent agent({done(ikeWithSecret())});
  EXPECT_EQ(runClient({"show", "--secrets", "IKE", "--socket", agent.socketPath}),
            printed(shownIke("s3cret")));
}

TEST(ClientShow, PrintsAllGroupsInTheOrderOfTheFile) {
  Settings settings;
  ScriptedAgent agent({done(wireBytes(settings.ikeGroup)), done(wireBytes(settings.logGroup)),
                       done(wireBytes(settings.updateGroup)), done(wireBytes(settings.policyGroup)),
                       done(wireBytes(settings.adminGroup)), done(wireBytes(settings.userList))});
  EXPECT_EQ(runClient({"--socket", agent.socketPath, "show"}),
            printed(shownIke("(hidden)") + shown("LOG") + shown("UPDATE") + shown("POLICY") +
                    shown("ADMIN") + "# USERS (no entries)\n"));
  EXPECT_EQ(agent.commands(), (Commands{"read IKE", "read LOG", "read UPDATE", "read POLICY",
                                        "read ADMIN", "read USERS"}));
}

TEST(ClientShow, PrintsNothingIfOneGroupIsRefused) {
  Settings settings;
  ScriptedAgent agent({done(wireBytes(settings.ikeGroup)), refused("it is locked")});
  EXPECT_EQ(runClient({"--socket", agent.socketPath, "show"}),
            failed(1, "reading LOG failed: it is locked"));
}

TEST(ClientShow, NumbersTheUsers) {
  const ExpectedGroup& user = expectedGroup("USER");
  Settings settings;
  listAdd(settings.userList)->NAME.value = "anna";
  listAdd(settings.userList)->PMP_AUTH.value = 1;
  ScriptedAgent agent({done(wireBytes(settings.userList))});
  EXPECT_EQ(runClient({"--socket", agent.socketPath, "show", "USERS"}),
            printed(user.shown("USERS[0]", initiallyBut({{"NAME", {"anna", ""}}})) +
                    user.shown("USERS[1]", initiallyBut({{"PMP_AUTH", {"PMPAUTH_PSK", ""}}}))));
}

TEST(ClientShow, MakesACommentOfAValueThatWouldBreakItsLine) {
  Settings settings;
  settings.adminGroup.ADMIN_GROUP.value = "a\nb\x1B\\";
  ScriptedAgent agent({done(wireBytes(settings.adminGroup))});
  EXPECT_EQ(runClient({"--socket", agent.socketPath, "show", "ADMIN"}),
            printed(replaced(shown("ADMIN"), "ADMIN.ADMIN_GROUP=admin\n",
                             "# ADMIN.ADMIN_GROUP=\"a\\x0ab\\x1b\\\\\"\n")));
}

TEST(ClientShow, UnknownGroupIsNotAskedFor) {
  ScriptedAgent agent({done()});
  EXPECT_EQ(runClient({"--socket", agent.socketPath, "show", "ROOT"}),
            failed(2,
                   "there is no group \"ROOT\"; the groups are IKE, LOG, UPDATE, POLICY, ADMIN, "
                   "USERS"));
  EXPECT_FALSE(agent.wasReached());
}

TEST(ClientShow, OutputThatCannotBeWrittenIsAnError) {
  Settings settings;
  ScriptedAgent agent({done(wireBytes(settings.logGroup))});
  EXPECT_EQ(runClient({"--socket", agent.socketPath, "show", "LOG"}, {.outputPath = "/dev/full"}),
            failed(3, "cannot write the output"));
}

TEST(ClientGet, PrintsTheBareValue) {
  Settings settings;
  settings.updateGroup.URL.value = " http://a/?b=c ";
  ScriptedAgent agent({done(wireBytes(settings.updateGroup))});
  EXPECT_EQ(runClient({"--socket", agent.socketPath, "get", "UPDATE.URL"}),
            printed(" http://a/?b=c \n"));
  EXPECT_EQ(agent.commands(), Commands{"read UPDATE"});
}

TEST(ClientGet, PrintsAValueWithoutANameAsItsNumber) {
  Settings settings;
  settings.logGroup.LOG_LEVEL.value = -7;
  ScriptedAgent agent({done(wireBytes(settings.logGroup))});
  EXPECT_EQ(runClient({"--socket", agent.socketPath, "get", "LOG.LOG_LEVEL"}), printed("-7\n"));
}

TEST(ClientGet, PrintsASecretThatIsAskedForByName) {
  ScriptedAgent agent({done(ikeWithSecret())});
  EXPECT_EQ(runClient({"--socket", agent.socketPath, "get", "IKE.QCD_SECRET"}),
            printed("s3cret\n"));
}

TEST(ClientGet, FindsAnEntryByItsIndex) {
  Settings settings;
  listAdd(settings.userList)->NAME.value = "anna";
  listAdd(settings.userList)->NAME.value = "boris";
  ScriptedAgent agent({done(wireBytes(settings.userList))});
  EXPECT_EQ(runClient({"--socket", agent.socketPath, "get", "USERS[1].NAME"}), printed("boris\n"));
}

TEST(ClientGet, SaysHowManyEntriesThereAre) {
  Settings settings;
  listAdd(settings.userList);
  ScriptedAgent agent({done(wireBytes(settings.userList))});
  EXPECT_EQ(runClient({"--socket", agent.socketPath, "get", "USERS[1].NAME"}),
            failed(2, "there is no USERS[1]; entries in the list, counted from 0: 1"));
}

TEST(ClientGet, WhatStaysInTheFileIsNotAskedFor) {
  ScriptedAgent agent({done()});
  EXPECT_EQ(runClient({"--socket", agent.socketPath, "get", "IKE.DPD_ENABLED"}),
            failed(2, "IKE.DPD_ENABLED stays in the settings file: the bridge does not carry it"));
  EXPECT_FALSE(agent.wasReached());
}

}  // namespace
}  // namespace client_testing
