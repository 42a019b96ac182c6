#include "client/assignment.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "client/settings.h"
#include "lparams/params/enum_param.h"
#include "tests/client/failure_message.h"

namespace client {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;
using client_testing::failureOf;

using namespace LPARAMS::Server;

struct LegalRow {
  const char* name;
  const char* text;
  const char* shown;
};

constexpr LegalRow LEGAL[] = {
    {"IKE.IKE_PORT", "1", "1"},
    {"IKE.IKE_PORT", "65535", "65535"},
    {"IKE.IKE_PORT", "000500", "500"},
    {"IKE.MAX_HALFOPEN", "0", "0"},
    {"IKE.MAX_HALFOPEN", "256", "256"},
    {"LOG.MAX_LOG_SIZE", "4294967295", "4294967295"},
    {"POLICY.PMP_TIMEOUT", "5", "5"},
    {"LOG.WALL_ON", "0", "0"},
    {"LOG.WALL_ON", "1", "1"},
    {"LOG.WALL_ON", "false", "0"},
    {"LOG.SYSLOG_ON", "true", "1"},
    {"LOG.SYSLOG_ON", "TRUE", "1"},
    {"LOG.LOG_LEVEL", "_LL_DETAILS", "_LL_DETAILS"},
    {"LOG.LOG_LEVEL", "_ll_verbose", "_LL_VERBOSE"},
    {"IKE.IPSEC_ANTI_REPLAY_WINDOW", "16*32", "16*32"},
    {"IKE.IPSEC_ANTI_REPLAY_WINDOW", "0", "0"},
    {"IKE.ERRNTF_POLICY", "ERRNTF_POLICY_ALWAYS", "ERRNTF_POLICY_ALWAYS"},
    {"UPDATE.SETTING", "upsrv::local", "UpSrv::LOCAL"},
    {"ADMIN.ADMIN_GROUP", "", ""},
    {"ADMIN.ADMIN_GROUP", " two words ", " two words "},
    {"POLICY.LOCAL_CERT_SUBJECT", "C=RU,O=\"\xd0\xb9\"\\", "C=RU,O=\"\xd0\xb9\"\\"},
    {"IKE.QCD_SECRET", "s3cret=", "s3cret="},
};

TEST(ClientAssignment, LegalTextIsStoredAndShown) {
  for (const LegalRow& row : LEGAL) {
    Settings settings;
    Param& param = settings.param(settings.place(row.name));
    EXPECT_EQ(failureOf([&] { assign(param, row.text, row.name); }), "no failure") << row.name;
    EXPECT_EQ(valueText(param), row.shown) << row.name;
  }
}

struct IllegalRow {
  const char* name;
  std::string_view text;
  const char* message;
};

constexpr IllegalRow ILLEGAL[] = {
    {"IKE.IKE_PORT", "", "IKE.IKE_PORT: \"\" is not a whole number from 1 to 65535"},
    {"IKE.IKE_PORT", "0", "IKE.IKE_PORT: \"0\" is not a whole number from 1 to 65535"},
    {"IKE.IKE_PORT", "65536", "IKE.IKE_PORT: \"65536\" is not a whole number from 1 to 65535"},
    {"IKE.IKE_PORT", "66036", "IKE.IKE_PORT: \"66036\" is not a whole number from 1 to 65535"},
    {"IKE.IKE_PORT", "-1", "IKE.IKE_PORT: \"-1\" is not a whole number from 1 to 65535"},
    {"IKE.IKE_PORT", "+1", "IKE.IKE_PORT: \"+1\" is not a whole number from 1 to 65535"},
    {"IKE.IKE_PORT", " 1", "IKE.IKE_PORT: \" 1\" is not a whole number from 1 to 65535"},
    {"IKE.IKE_PORT", "1 ", "IKE.IKE_PORT: \"1 \" is not a whole number from 1 to 65535"},
    {"IKE.IKE_PORT", "1\n", R"(IKE.IKE_PORT: "1\x0a" is not a whole number from 1 to 65535)"},
    {"IKE.IKE_PORT", "1.0", "IKE.IKE_PORT: \"1.0\" is not a whole number from 1 to 65535"},
    {"IKE.IKE_PORT", "0x1", "IKE.IKE_PORT: \"0x1\" is not a whole number from 1 to 65535"},
    {"IKE.IKE_PORT", "five", "IKE.IKE_PORT: \"five\" is not a whole number from 1 to 65535"},
    {"LOG.MAX_LOG_SIZE", "4294967296",
     "LOG.MAX_LOG_SIZE: \"4294967296\" is not a whole number from 0 to 4294967295"},
    {"LOG.MAX_LOG_SIZE", "18446744073709551616",
     "LOG.MAX_LOG_SIZE: \"18446744073709551616\" is not a whole number from 0 to 4294967295"},
    {"POLICY.PMP_TIMEOUT", "4",
     "POLICY.PMP_TIMEOUT: \"4\" is not a whole number from 5 to 4294967295"},
    {"LOG.WALL_ON", "", "LOG.WALL_ON: \"\" is not 0 or 1"},
    {"LOG.WALL_ON", "2", "LOG.WALL_ON: \"2\" is not 0 or 1"},
    {"LOG.WALL_ON", "01", "LOG.WALL_ON: \"01\" is not 0 or 1"},
    {"LOG.WALL_ON", "on", "LOG.WALL_ON: \"on\" is not 0 or 1"},
    {"LOG.LOG_LEVEL", "",
     "LOG.LOG_LEVEL: \"\" is not one of _LL_DISABLED, _LL_EVENTS, _LL_DETAILS, _LL_VERBOSE"},
    {"LOG.LOG_LEVEL", "2",
     "LOG.LOG_LEVEL: \"2\" is not one of _LL_DISABLED, _LL_EVENTS, _LL_DETAILS, _LL_VERBOSE"},
    {"IKE.IPSEC_TFC_PADDING", "TFC_PADDING_O",
     "IKE.IPSEC_TFC_PADDING: \"TFC_PADDING_O\" is not one of TFC_PADDING_OFF, TFC_PADDING_ON"},
    {"IKE.IPSEC_TFC_PADDING", "TFC_PADDING_ON|TFC_PADDING_OFF",
     "IKE.IPSEC_TFC_PADDING: \"TFC_PADDING_ON|TFC_PADDING_OFF\" is not one of TFC_PADDING_OFF, "
     "TFC_PADDING_ON"},
    {"ADMIN.ADMIN_GROUP", "a\nIKE_PORT=1",
     R"(ADMIN.ADMIN_GROUP: "a\x0aIKE_PORT=1" is not one line of text without control characters)"},
    {"ADMIN.ADMIN_GROUP", "a\0"sv,
     R"(ADMIN.ADMIN_GROUP: "a\x00" is not one line of text without control characters)"},
    {"ADMIN.ADMIN_GROUP", "a\r",
     R"(ADMIN.ADMIN_GROUP: "a\x0d" is not one line of text without control characters)"},
    {"IKE.QCD_SECRET", "s3cret\n",
     "IKE.QCD_SECRET: the value is not one line of text without control characters"},
};

TEST(ClientAssignment, IllegalTextIsRefusedInWordsAndChangesNothing) {
  for (const IllegalRow& row : ILLEGAL) {
    Settings settings;
    Param& param = settings.param(settings.place(row.name));
    const std::string before = valueText(param);
    EXPECT_EQ(failureOf([&] { assign(param, std::string(row.text), row.name); }),
              std::string("2: ") + row.message);
    EXPECT_EQ(valueText(param), before) << row.name;
  }
}

TEST(ClientAssignment, WhatTheBridgeDidNotCheckIsShownAsItIs) {
  Settings settings;
  settings.logGroup.LOG_LEVEL.value = 7;
  settings.ikeGroup.ERRNTF_POLICY.value = -2;
  settings.ikeGroup.IKE_PORT.value = 0;
  settings.logGroup.FACILITY.value = 4294967295U;
  settings.adminGroup.ADMIN_GROUP.value = "a\nb\0"s;
  EXPECT_EQ(valueText(settings.logGroup.LOG_LEVEL), "7");
  EXPECT_EQ(valueText(settings.ikeGroup.ERRNTF_POLICY), "-2");
  EXPECT_EQ(valueText(settings.ikeGroup.IKE_PORT), "0");
  EXPECT_EQ(valueText(settings.logGroup.FACILITY), "4294967295");
  EXPECT_EQ(valueText(settings.adminGroup.ADMIN_GROUP), "a\nb\0"s);
  EXPECT_EQ(settings.logGroup.LOG_LEVEL.value, 7) << "to be shown changes a value";
}

/// Calls `visit` with every parameter of the catalogue, those of a user's entry included.
template <typename Visit>
void forEachParam(Settings& settings, Visit visit) {
  listAdd(settings.userList);
  for (ParamGroup* group : settings.groups()) {
    for (Param* param : group->fileParams) visit(*param);
  }
  for (Param* param : settings.userList.items[0]->fileParams) visit(*param);
}

TEST(ClientAssignment, EveryDefaultIsTakenBack) {
  Settings settings;
  forEachParam(settings, [&](Param& param) {
    const std::string before = valueText(param);
    EXPECT_EQ(failureOf([&] { assign(param, before, param.name); }), "no failure");
    EXPECT_EQ(valueText(param), before) << param.name;
  });
}

TEST(ClientAssignment, EveryVariantIsTakenAndShown) {
  Settings settings;
  forEachParam(settings, [](Param& param) {
    auto* const enumeration = dynamic_cast<EnumParam*>(&param);
    if (enumeration == nullptr) return;
    for (const Variant* row = enumeration->variants; row->name != nullptr; ++row) {
      assign(param, row->name, param.name);
      EXPECT_EQ(enumeration->value, row->value) << param.name;
      EXPECT_EQ(valueText(param), row->name) << param.name;
    }
  });
}

TEST(ClientAssignment, OneParameterIsASecret) {
  Settings settings;
  forEachParam(settings, [&](Param& param) {
    EXPECT_EQ(isSecret(param), &param == &settings.ikeGroup.QCD_SECRET) << param.name;
  });
}

TEST(ClientAssignment, AssignmentIsSplitAtTheFirstEqualsSign) {
  const Assignment assignment = parseAssignment("A.B=c=d");
  EXPECT_EQ(assignment.name, "A.B");
  EXPECT_EQ(assignment.value, "c=d");
  EXPECT_EQ(parseAssignment("A.B=").value, "");
  EXPECT_EQ(parseAssignment("=c").name, "");
}

TEST(ClientAssignment, WhatIsNoAssignmentIsNotShown) {
  EXPECT_EQ(failureOf([] { parseAssignment("IKE.QCD_SECRET:s3cret"); }),
            "2: an assignment has no \"=\"; write NAME=VALUE");
}

}  // namespace
}  // namespace client
