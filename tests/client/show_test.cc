// The commands "show" and "get", as a user runs them.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "client/settings.h"
#include "tests/client/client_process.h"
#include "tests/client/scripted_agent.h"
#include "tests/support/param_forms.h"
#include "tests/support/readable_bytes.h"

namespace client_testing {
namespace {

using client::Settings;
using testing_support::unhex;
using testing_support::wireBytes;
using Commands = std::vector<std::string>;

std::string ikeWithSecret() {
  Settings settings;
  settings.ikeGroup.QCD_SECRET.value = "s3cret";
  return wireBytes(settings.ikeGroup);
}

constexpr const char* LOG_LINES =
    "LOG.LOG_LEVEL=_LL_EVENTS\n"
    "LOG.LOG_LEVEL_KERNEL=_LL_EVENTS\n"
    "LOG.FILELOG_ON=1\n"
    "LOG.MAX_LOG_SIZE=10485760\n"
    "LOG.BACKUP_DEPTH=5\n"
    "LOG.SYSLOG_ON=0\n"
    "LOG.ENCODING_FROM=CONVI_UTF8\n"
    "LOG.ENCODING_TO=CONVI_UTF8\n"
    "LOG.FACILITY=0\n"
    "LOG.LANGUAGE=LOG_LANG_ENG\n"
    "LOG.WALL_ON=1\n"
    "LOG.VERBOSE_MODE_ON=0\n"
    "LOG.VERBOSE_MODE_ON_KERNEL=0\n"
    "LOG.SYSLOG_SINGLELINE=0\n";

constexpr const char* IKE_LINES_BEFORE_THE_SECRET =
    "IKE.IKE1_STATUS=IKE_STATUS_ENABLED\n"
    "IKE.IKE2_STATUS=IKE_STATUS_ENABLED\n"
    "IKE.IKE_PORT=500\n"
    "IKE.NATT_PORT=4500\n"
    "IKE.EXCHANGE_TIMEOUT=60\n"
    "IKE.SHORT_EXCHANGE_TIMEOUT=5\n"
    "IKE.MAX_HALFOPEN=64\n"
    "IKE.WNDSIZE_INITIATOR=4\n"
    "IKE.WNDSIZE_RESPONDER=4\n"
    "IKE.SERVERS_POLICY=SERVERS_POLICY_SEQ\n"
    "IKE.NATT_POLICY=NATT_POLICY_STD\n"
    "IKE.ERRNTF_POLICY=ERRNTF_POLICY_10\n"
    "IKE.IKE1_FRAGM_ENABLED=1\n"
    "IKE.IKE2_FRAGMENTATION=IKE2_FRAGM_AUTO\n"
    "IKE.IKE_LIFETIME_JITTER=1\n"
    "IKE.IPSEC_LIFETIME_JITTER=1\n";

constexpr const char* IKE_LINES_BEHIND_THE_SECRET =
    "IKE.NATKA_INTERVAL=20\n"
    "IKE.IPSEC_PROV_TRAFFIC=2048\n"
    "IKE.IPSEC_DELAYED_DELETE_IN_SA=5\n"
    "IKE.IPSEC_ANTI_REPLAY_WINDOW=2*32\n"
    "IKE.IPSEC_TFC_PADDING=TFC_PADDING_OFF\n"
    "IKE.PERSISTENT_SA=0\n"
    "IKE.IKECFG_DNS=IKECFG_DNS_ENABLE_BEFORE\n"
    "IKE.CRL_PROCESSING=CRL_DISABLE\n";

TEST(ClientShow, PrintsOneGroup) {
  Settings settings;
  ScriptedAgent agent({done(wireBytes(settings.logGroup))});
  EXPECT_EQ(runClient({"--socket", agent.socketPath, "show", "LOG"}), printed(LOG_LINES));
  EXPECT_EQ(agent.commands(), Commands{"read LOG"});
}

TEST(ClientShow, HidesSecretsAndLeavesOutWhatStaysInTheFile) {
  ScriptedAgent agent({done(ikeWithSecret())});
  EXPECT_EQ(runClient({"--socket", agent.socketPath, "show", "IKE"}),
            printed(std::string(IKE_LINES_BEFORE_THE_SECRET) + "IKE.QCD_SECRET=(hidden)\n" +
                    IKE_LINES_BEHIND_THE_SECRET));
}

TEST(ClientShow, PrintsSecretsIfToldTo) {
  ScriptedAgent agent({done(ikeWithSecret())});
  EXPECT_EQ(runClient({"show", "--secrets", "IKE", "--socket", agent.socketPath}),
            printed(std::string(IKE_LINES_BEFORE_THE_SECRET) + "IKE.QCD_SECRET=s3cret\n" +
                    IKE_LINES_BEHIND_THE_SECRET));
}

TEST(ClientShow, PrintsAllGroupsInTheOrderOfTheFile) {
  Settings settings;
  ScriptedAgent agent({done(wireBytes(settings.ikeGroup)), done(wireBytes(settings.logGroup)),
                       done(wireBytes(settings.updateGroup)), done(wireBytes(settings.policyGroup)),
                       done(wireBytes(settings.adminGroup)), done(wireBytes(settings.userList))});
  EXPECT_EQ(runClient({"--socket", agent.socketPath, "show"}),
            printed(std::string(IKE_LINES_BEFORE_THE_SECRET) + "IKE.QCD_SECRET=(hidden)\n" +
                    IKE_LINES_BEHIND_THE_SECRET + LOG_LINES +
                    "UPDATE.CHECK_UPDATE_INTERVAL=1800\n"
                    "UPDATE.PATH=\n"
                    "UPDATE.AVAILABLE_UPDATE_VERSION=\n"
                    "UPDATE.DOWNLOADED_UPDATE_VERSION=\n"
                    "UPDATE.UPDATE_VERSION=\n"
                    "UPDATE.SCHEDULE=\n"
                    "UPDATE.SETTING=UpSrv::DISABLED\n"
                    "UPDATE.URL=\n"
                    "UPDATE.MODE=UpSrv::NOTIFY_ONLY\n"
                    "UPDATE.AVAILABLE_UPDATE_NAME=\n"
                    "UPDATE.DOWNLOAD_PATH=\n"
                    "UPDATE.UPDATE_URI=\n"
                    "UPDATE.VERIFY_DOWNLOADS=1\n"
                    "POLICY.SYSTEM_LSP_SOURCE=SOURCE_DDP\n"
                    "POLICY.SYSTEM_LSP_FROM_FILE=\n"
                    "POLICY.PMP_SERVERS=\n"
                    "POLICY.PMP_LOGLEVEL=_LL_EVENTS\n"
                    "POLICY.PMP_AUTH=PMPAUTH_SIG\n"
                    "POLICY.PMP_AUTH_MODE=PMPAUTH_MM\n"
                    "POLICY.PMP_IDTYPE=PMPID_KEY_ID\n"
                    "POLICY.PMP_IDDATA=\n"
                    "POLICY.LOCAL_CERT_SUBJECT=\n"
                    "POLICY.PSK_NAME=\n"
                    "POLICY.PMP_TIMEOUT=10\n"
                    "POLICY.DDP_LOGLEVEL=_LL_DISABLED\n"
                    "ADMIN.SESSION_EXPTIME=10\n"
                    "ADMIN.LOGIN_ON_SAVE_TOKEN_PASSWORD=1\n"
                    "ADMIN.ADMIN_GROUP=admin\n"
                    "# USERS (no entries)\n"));
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
  Settings settings;
  listAdd(settings.userList)->NAME.value = "anna";
  listAdd(settings.userList)->PMP_AUTH.value = 1;
  ScriptedAgent agent({done(wireBytes(settings.userList))});
  EXPECT_EQ(runClient({"--socket", agent.socketPath, "show", "USERS"}),
            printed("USERS[0].NAME=anna\n"
                    "USERS[0].LSP_SOURCE=SOURCE_DDP\n"
                    "USERS[0].LSP_FILE=\n"
                    "USERS[0].PMP_SERVERS=\n"
                    "USERS[0].PMP_LOGLEVEL=_LL_EVENTS\n"
                    "USERS[0].PMP_AUTH=PMPAUTH_SIG\n"
                    "USERS[0].PMP_AUTH_MODE=PMPAUTH_MM\n"
                    "USERS[0].PMP_IDTYPE=PMPID_KEY_ID\n"
                    "USERS[0].PMP_IDDATA=\n"
                    "USERS[0].PMP_TIMEOUT=10\n"
                    "USERS[0].PMP_CERT_SUBJECT=\n"
                    "USERS[0].PMP_PSK_NAME=\n"
                    "USERS[1].NAME=\n"
                    "USERS[1].LSP_SOURCE=SOURCE_DDP\n"
                    "USERS[1].LSP_FILE=\n"
                    "USERS[1].PMP_SERVERS=\n"
                    "USERS[1].PMP_LOGLEVEL=_LL_EVENTS\n"
                    "USERS[1].PMP_AUTH=PMPAUTH_PSK\n"
                    "USERS[1].PMP_AUTH_MODE=PMPAUTH_MM\n"
                    "USERS[1].PMP_IDTYPE=PMPID_KEY_ID\n"
                    "USERS[1].PMP_IDDATA=\n"
                    "USERS[1].PMP_TIMEOUT=10\n"
                    "USERS[1].PMP_CERT_SUBJECT=\n"
                    "USERS[1].PMP_PSK_NAME=\n"));
}

TEST(ClientShow, MakesACommentOfAValueThatWouldBreakItsLine) {
  ScriptedAgent agent({done(unhex("0A 00 00 00 01 05 00 00 00 61 0A 62 1B 5C"))});
  EXPECT_EQ(runClient({"--socket", agent.socketPath, "show", "ADMIN"}),
            printed("ADMIN.SESSION_EXPTIME=10\n"
                    "ADMIN.LOGIN_ON_SAVE_TOKEN_PASSWORD=1\n"
                    "# ADMIN.ADMIN_GROUP=\"a\\x0ab\\x1b\\\\\"\n"));
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
