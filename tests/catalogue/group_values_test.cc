// Single settings whose behaviour somebody relies on, group by group.
#include <gtest/gtest.h>

#include <algorithm>

#include "lparams/catalogue/admin_group.h"
#include "lparams/catalogue/ike_group.h"
#include "lparams/catalogue/log_group.h"
#include "lparams/catalogue/policy_group.h"
#include "lparams/catalogue/update_group.h"
#include "lparams/catalogue/user_entry.h"
#include "tests/support/param_forms.h"
#include "tests/support/readable_bytes.h"

namespace LPARAMS::Server {
namespace {

using namespace testing_support;

/// The value that a line of a settings file leaves in a group.
template <typename Group>
std::string lineAfterLoading(const std::string& line) {
  Group group;
  EXPECT_TRUE(loadText(group, "\n" + line + "\nend=\n"));
  Param* param = group.getParam(line.substr(0, line.find('=')));
  if (param == nullptr) return "no such parameter";
  const std::string saved = savedText(*param);
  return saved.substr(0, saved.size() - 1);
}

struct LineRow {
  const char* inFile;
  const char* afterwards;
};

template <typename Group>
void checkLines(std::initializer_list<LineRow> rows) {
  for (const LineRow& row : rows) {
    EXPECT_EQ(lineAfterLoading<Group>(row.inFile), row.afterwards) << row.inFile;
  }
}

TEST(LogGroup, NumbersInTheFileAreBounded) {
  checkLines<LOG_t>({{"FACILITY=9", "FACILITY=7"},
                     {"FACILITY=7", "FACILITY=7"},
                     {"BACKUP_DEPTH=5000", "BACKUP_DEPTH=1000"},
                     {"MAX_LOG_SIZE=4294967295", "MAX_LOG_SIZE=4294967295"}});
}

TEST(LogGroup, AnEncodingInTheFileIsItsCode) {
  LOG_t log;
  EXPECT_TRUE(loadText(log, "\nENCODING_TO=CONVI_1251\nend=\n"));
  EXPECT_EQ(log.ENCODING_TO.value, 1251);
  EXPECT_EQ(log.ENCODING_FROM.value, 6);
}

TEST(LogGroup, AgentAndKernelLevelsAreIndependent) {
  LOG_t log;
  EXPECT_TRUE(loadText(log, "\nLOG_LEVEL=_LL_VERBOSE\nVERBOSE_MODE_ON=1\nend=\n"));
  EXPECT_EQ(log.LOG_LEVEL.value, 3);
  EXPECT_EQ(log.LOG_LEVEL_KERNEL.value, 1);
  EXPECT_TRUE(log.VERBOSE_MODE_ON.value);
  EXPECT_FALSE(log.VERBOSE_MODE_ON_KERNEL.value);
}

TEST(IkeGroup, NumbersInTheFileAreMovedToTheirLimits) {
  checkLines<IKE_t>({
      {"IKE_PORT=0", "IKE_PORT=1"},
      {"EXCHANGE_TIMEOUT=1", "EXCHANGE_TIMEOUT=5"},
      {"EXCHANGE_TIMEOUT=601", "EXCHANGE_TIMEOUT=600"},
      {"SHORT_EXCHANGE_TIMEOUT=2", "SHORT_EXCHANGE_TIMEOUT=3"},
      {"WNDSIZE_INITIATOR=0", "WNDSIZE_INITIATOR=1"},
      {"WNDSIZE_RESPONDER=17", "WNDSIZE_RESPONDER=16"},
      {"MAX_HALFOPEN=300", "MAX_HALFOPEN=256"},
      {"NATKA_INTERVAL=0", "NATKA_INTERVAL=1"},
      {"IPSEC_TRSEL_MAX_SIZE=0", "IPSEC_TRSEL_MAX_SIZE=1"},
      {"IPSEC_TRSEL_MAX_SIZE=256", "IPSEC_TRSEL_MAX_SIZE=255"},
      {"IPSEC_MAX_ICV_CHECK_FAILS=1000000001", "IPSEC_MAX_ICV_CHECK_FAILS=1000000000"},
  });
}

TEST(IkeGroup, NumbersThatMayBeZero) {
  checkLines<IKE_t>({
      {"MAX_HALFOPEN=0", "MAX_HALFOPEN=0"},
      {"DPD_IDLE_TIME=0", "DPD_IDLE_TIME=0"},
      {"IPSEC_PROV_TRAFFIC=0", "IPSEC_PROV_TRAFFIC=0"},
      {"IPSEC_DELAYED_DELETE_IN_SA=0", "IPSEC_DELAYED_DELETE_IN_SA=0"},
      {"IPSEC_MAX_ICV_CHECK_FAILS=0", "IPSEC_MAX_ICV_CHECK_FAILS=0"},
  });
}

TEST(IkeGroup, TheAntiReplayWindowIsNamedAsAMultipleOf32) {
  IKE_t ike;
  EXPECT_TRUE(loadText(ike, "\nIPSEC_ANTI_REPLAY_WINDOW=2*32\nend=\n"));
  EXPECT_EQ(ike.IPSEC_ANTI_REPLAY_WINDOW.value, 64);
  ike.IPSEC_ANTI_REPLAY_WINDOW.value = 512;
  EXPECT_EQ(savedText(ike.IPSEC_ANTI_REPLAY_WINDOW), "IPSEC_ANTI_REPLAY_WINDOW=16*32\n");
  EXPECT_TRUE(loadText(ike, "\nIPSEC_ANTI_REPLAY_WINDOW=0\nend=\n"));
  EXPECT_EQ(ike.IPSEC_ANTI_REPLAY_WINDOW.value, 0);
}

// Kept: limits belong to the file, the variant check to saving, and neither to the wire.
TEST(IkeGroup, ValuesFromTheWireStandUntilTheNextLoadOrSave) {
  IKE_t ike;
  readBytes(ike.IKE_PORT, unhex("00 00"));
  readBytes(ike.EXCHANGE_TIMEOUT, unhex("E8 03 00 00"));
  readBytes(ike.IPSEC_ANTI_REPLAY_WINDOW, unhex("64 00 00 00"));
  EXPECT_EQ(ike.IKE_PORT.value, 0);
  EXPECT_EQ(ike.EXCHANGE_TIMEOUT.value, 1000u);
  EXPECT_EQ(ike.IPSEC_ANTI_REPLAY_WINDOW.value, 100);

  const std::string block = savedText(ike);
  EXPECT_EQ(ike.IKE_PORT.value, 0);
  EXPECT_EQ(ike.EXCHANGE_TIMEOUT.value, 1000u);
  EXPECT_EQ(ike.IPSEC_ANTI_REPLAY_WINDOW.value, 64);

  EXPECT_TRUE(loadText(ike, block.substr(block.find('=') + 1)));
  EXPECT_EQ(ike.IKE_PORT.value, 1);
  EXPECT_EQ(ike.EXCHANGE_TIMEOUT.value, 600u);
}

TEST(IkeGroup, FileOnlyMembersAreFoundByName) {
  IKE_t ike;
  EXPECT_EQ(ike.getParam("DPD_ENABLED"), &ike.DPD_ENABLED);
  EXPECT_EQ(ike.getParam("IPSEC_MAX_ICV_CHECK_FAILS"), &ike.IPSEC_MAX_ICV_CHECK_FAILS);
  EXPECT_EQ(ike.getParam("ike_port"), nullptr);
}

TEST(UserEntry, TheTimeoutIsAtLeastFiveAndHasNoUpperBound) {
  checkLines<USER_t>({{"PMP_TIMEOUT=3", "PMP_TIMEOUT=5"},
                      {"PMP_TIMEOUT=0", "PMP_TIMEOUT=5"},
                      {"PMP_TIMEOUT=5", "PMP_TIMEOUT=5"},
                      {"PMP_TIMEOUT=4294967295", "PMP_TIMEOUT=4294967295"}});
}

TEST(UserEntry, NamesOfVariantsInTheFileBecomeTheirValues) {
  USER_t user;
  EXPECT_TRUE(loadText(user, "\nPMP_IDTYPE=PMPID_KEY_ID_HEX\nPMP_AUTH=pmpauth_psk\nend=\n"));
  EXPECT_EQ(user.PMP_IDTYPE.value, 5);
  EXPECT_EQ(user.PMP_AUTH.value, 1);
  EXPECT_EQ(savedText(user.PMP_AUTH), "PMP_AUTH=PMPAUTH_PSK\n");
}

TEST(PolicyGroup, TheTimeoutIsAtLeastFiveAndHasNoUpperBound) {
  checkLines<POLICY_t>({{"PMP_TIMEOUT=0", "PMP_TIMEOUT=5"},
                        {"PMP_TIMEOUT=4", "PMP_TIMEOUT=5"},
                        {"PMP_TIMEOUT=4294967295", "PMP_TIMEOUT=4294967295"}});
}

// Kept: limits belong to the file, the variant check to saving, and neither to the wire.
TEST(PolicyGroup, ValuesFromTheWireStandUntilTheNextLoadOrSave) {
  POLICY_t policy;
  readBytes(policy.PMP_TIMEOUT, unhex("00 00 00 00"));
  readBytes(policy.PMP_IDTYPE, unhex("06 00 00 00"));
  EXPECT_EQ(policy.PMP_TIMEOUT.value, 0u);
  EXPECT_EQ(policy.PMP_IDTYPE.value, 6);

  const std::string block = savedText(policy);
  EXPECT_EQ(policy.PMP_TIMEOUT.value, 0u);
  EXPECT_EQ(policy.PMP_IDTYPE.value, 0);
  EXPECT_EQ(savedText(policy.PMP_IDTYPE), "PMP_IDTYPE=PMPID_KEY_ID\n");

  EXPECT_TRUE(loadText(policy, block.substr(block.find('=') + 1)));
  EXPECT_EQ(policy.PMP_TIMEOUT.value, 5u);
}

TEST(PolicyGroup, TheHexadecimalKeyIdentifierIsValid) {
  POLICY_t policy;
  readBytes(policy.PMP_IDTYPE, unhex("05 00 00 00"));
  EXPECT_EQ(savedText(policy.PMP_IDTYPE), "PMP_IDTYPE=PMPID_KEY_ID_HEX\n");
  EXPECT_EQ(policy.PMP_IDTYPE.value, 5);
}

TEST(PolicyGroup, TheTwoLogLevelsAreIndependentOverOneTable) {
  POLICY_t policy;
  EXPECT_EQ(policy.PMP_LOGLEVEL.variants, policy.DDP_LOGLEVEL.variants);
  EXPECT_TRUE(loadText(policy, "\nDDP_LOGLEVEL=_LL_VERBOSE\nend=\n"));
  EXPECT_EQ(policy.DDP_LOGLEVEL.value, 3);
  EXPECT_EQ(policy.PMP_LOGLEVEL.value, 1);
  EXPECT_TRUE(loadText(policy, "\nPMP_LOGLEVEL=bogus\nDDP_LOGLEVEL=bogus\nend=\n"));
  EXPECT_EQ(policy.DDP_LOGLEVEL.value, 0);
  EXPECT_EQ(policy.PMP_LOGLEVEL.value, 1);
}

TEST(AdminGroup, TheSessionTimeIsBoundedAndMayBeZero) {
  checkLines<ADMIN_t>({{"SESSION_EXPTIME=100000", "SESSION_EXPTIME=86400"},
                       {"SESSION_EXPTIME=86400", "SESSION_EXPTIME=86400"},
                       {"SESSION_EXPTIME=0", "SESSION_EXPTIME=0"}});
}

TEST(UpdateGroup, NamesOfVariantsCarryTheirScope) {
  UPDATE_t update;
  EXPECT_TRUE(loadText(update, "\nSETTING=UpSrv::LOCAL\nMODE=UpSrv::NO_MODE\nend=\n"));
  EXPECT_EQ(update.SETTING.value, 15);
  EXPECT_EQ(update.MODE.value, 0);
  EXPECT_TRUE(loadText(update, "\nSETTING=LOCAL\nend=\n"));
  EXPECT_EQ(update.SETTING.value, 13);
}

TEST(UpdateGroup, ASettingOfZeroHasNoNameAndIsSavedAsDisabled) {
  UPDATE_t update;
  readBytes(update.SETTING, unhex("00 00 00 00"));
  EXPECT_EQ(update.SETTING.value, 0);
  EXPECT_EQ(savedText(update.SETTING), "SETTING=UpSrv::DISABLED\n");
  EXPECT_EQ(update.SETTING.value, 13);
}

TEST(UpdateGroup, TheMachineIdentifierIsInTheFileOnly) {
  UPDATE_t update;
  EXPECT_EQ(update.wireParams.front(), &update.CHECK_UPDATE_INTERVAL);
  EXPECT_EQ(update.wireParams.back(), &update.VERIFY_DOWNLOADS);
  EXPECT_EQ(update.getParam("MACHINE_ID_TYPE"), &update.MACHINE_ID_TYPE);
  checkLines<UPDATE_t>({{"MACHINE_ID_FILE=/etc/id x", "MACHINE_ID_FILE=/etc/id x"},
                        {"MACHINE_ID_TYPE=uuid", "MACHINE_ID_TYPE=uuid"}});
}

}  // namespace
}  // namespace LPARAMS::Server
