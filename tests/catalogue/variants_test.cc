#include "lparams/catalogue/variants.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>

#include "lparams/params/enum_param.h"
#include "tests/support/param_forms.h"
#include "tests/support/readable_bytes.h"
#include "tests/support/recording_load_log.h"

namespace LPARAMS::Server {
namespace {

using namespace testing_support;

struct ExpectedVariant {
  int value;
  std::string name;
};

struct ExpectedTable {
  const char* title;
  const Variant* table;
  std::vector<ExpectedVariant> rows;
};

// The values are on the wire and the names in settings files, so both are written out here.
// clang-format off
const ExpectedTable TABLES[] = {
    {"LSP_SOURCE_VARIANTS", LSP_SOURCE_VARIANTS, {
      {0, "SOURCE_DDP"}, {1, "SOURCE_FILE"}, {2, "SOURCE_PMP"}, {3, "SOURCE_TPN"},
    }},
    {"LOG_LEVEL_VARIANTS", LOG_LEVEL_VARIANTS, {
      {0, "_LL_DISABLED"}, {1, "_LL_EVENTS"}, {2, "_LL_DETAILS"}, {3, "_LL_VERBOSE"},
    }},
    {"PMP_AUTH_VARIANTS", PMP_AUTH_VARIANTS, {
      {0, "PMPAUTH_SIG"}, {1, "PMPAUTH_PSK"},
    }},
    {"PMP_AUTH_MODE_VARIANTS", PMP_AUTH_MODE_VARIANTS, {
      {0, "PMPAUTH_MM"}, {1, "PMPAUTH_AM"},
    }},
    {"PMP_ID_TYPE_VARIANTS", PMP_ID_TYPE_VARIANTS, {
      {0, "PMPID_KEY_ID"}, {5, "PMPID_KEY_ID_HEX"}, {1, "PMPID_IP"}, {2, "PMPID_DNS"},
      {3, "PMPID_EMAIL"}, {4, "PMPID_DN"},
    }},
    {"UPDATE_SETTING_VARIANTS", UPDATE_SETTING_VARIANTS, {
      {13, "UpSrv::DISABLED"}, {14, "UpSrv::LSP"}, {15, "UpSrv::LOCAL"},
    }},
    {"UPDATE_MODE_VARIANTS", UPDATE_MODE_VARIANTS, {
      {0, "UpSrv::NO_MODE"}, {1, "UpSrv::IMMEDIATELY"}, {2, "UpSrv::ON_SCHEDULE"},
      {3, "UpSrv::DOWNLOAD_ONLY"}, {4, "UpSrv::NOTIFY_ONLY"},
    }},
    {"ENCODINGS_VARIANTS", ENCODINGS_VARIANTS, {
      {7, "CONVI_KOI8R"}, {8, "CONVI_DOS"}, {1251, "CONVI_1251"}, {6, "CONVI_UTF8"},
    }},
    {"LOG_LANGUAGE_VARIANTS", LOG_LANGUAGE_VARIANTS, {
      {0, "LOG_LANG_ENG"}, {1, "LOG_LANG_RUS"},
    }},
    {"IKE_STATUS_VARIANTS", IKE_STATUS_VARIANTS, {
      {0, "IKE_STATUS_DISABLED"}, {2, "IKE_STATUS_ENABLED"}, {1, "IKE_STATUS_RESPONDER"},
    }},
    {"SERVERS_POLICY_VARIANTS", SERVERS_POLICY_VARIANTS, {
      {0, "SERVERS_POLICY_FIRST"}, {1, "SERVERS_POLICY_SEQ"}, {2, "SERVERS_POLICY_PAR2"},
      {4, "SERVERS_POLICY_PAR4"}, {8, "SERVERS_POLICY_PAR8"},
    }},
    {"NATT_POLICY_VARIANTS", NATT_POLICY_VARIANTS, {
      {0, "NATT_POLICY_DISABLED"}, {1, "NATT_POLICY_STD"}, {2, "NATT_POLICY_ALL"},
      {3, "NATT_POLICY_OLD"}, {4, "NATT_POLICY_AUTO"}, {129, "NATT_POLICY_STD_FORCE"},
      {130, "NATT_POLICY_ALL_FORCE"}, {131, "NATT_POLICY_OLD_FORCE"},
      {132, "NATT_POLICY_AUTO_FORCE"},
    }},
    {"ERRNTF_POLICY_VARIANTS", ERRNTF_POLICY_VARIANTS, {
      {0, "ERRNTF_POLICY_NEVER"}, {1, "ERRNTF_POLICY_1"}, {10, "ERRNTF_POLICY_10"},
      {100, "ERRNTF_POLICY_100"}, {-1, "ERRNTF_POLICY_ALWAYS"},
    }},
    {"IKE2_FRAGM_VARIANTS", IKE2_FRAGM_VARIANTS, {
      {0, "IKE2_FRAGM_DISABLED"}, {1, "IKE2_FRAGM_AUTO"}, {2, "IKE2_FRAGM_ALWAYS"},
    }},
    {"ANTI_REPLAY_WINDOW_SIZE_VARIANTS", ANTI_REPLAY_WINDOW_SIZE_VARIANTS, {
      {0, "0"}, {32, "1*32"}, {64, "2*32"}, {128, "4*32"}, {256, "8*32"}, {512, "16*32"},
    }},
    {"TFC_PADDING_VARIANTS", TFC_PADDING_VARIANTS, {
      {0, "TFC_PADDING_OFF"}, {1, "TFC_PADDING_ON"},
    }},
    {"IKECFG_DNS_MODE_VARIANTS", IKECFG_DNS_MODE_VARIANTS, {
      {0, "IKECFG_DNS_DISABLE"}, {1, "IKECFG_DNS_ENABLE"}, {2, "IKECFG_DNS_ENABLE_BEFORE"},
      {3, "IKECFG_DNS_ENABLE_AFTER"},
    }},
    {"CRL_PROC_VARIANTS", CRL_PROC_VARIANTS, {
      {0, "CRL_DISABLE"}, {1, "CRL_ENABLE"}, {2, "CRL_ENABLE_SOFT"},
    }},
};
// clang-format on

/// A parameter over each table in turn, whose default is the table's last row.
template <typename Check>
void forEachTable(Check check) {
  for (const ExpectedTable& expected : TABLES) {
    SCOPED_TRACE(expected.title);
    ParamGroup group("GROUP");
    EnumParam param(group, "P", expected.rows.back().value, expected.table);
    check(expected.rows, param);
  }
}

/// Loads the text, expects no report, and returns the value.
int loaded(EnumParam& param, const std::string& text) {
  ActiveLoadLog log;
  EXPECT_TRUE(loadText(param, text + "\n"));
  EXPECT_EQ(log.reports, std::vector<std::string>{}) << text;
  return param.value;
}

std::string converted(std::string text, int (*convert)(int)) {
  for (char& c : text) c = static_cast<char>(convert(c));
  return text;
}

TEST(Variants, RowsAreStoredInTheirOrderAndClosedByANullName) {
  for (const ExpectedTable& expected : TABLES) {
    SCOPED_TRACE(expected.title);
    for (size_t i = 0; i < expected.rows.size(); ++i) {
      ASSERT_NE(expected.table[i].name, nullptr) << "row " << i;
      EXPECT_EQ(expected.table[i].value, expected.rows[i].value) << "row " << i;
      EXPECT_EQ(expected.table[i].name, expected.rows[i].name);
    }
    EXPECT_EQ(expected.table[expected.rows.size()].name, nullptr);
    EXPECT_EQ(expected.table[expected.rows.size()].value, 0);
  }
}

TEST(Variants, EveryValueIsSavedByItsNameAndLoadedFromIt) {
  forEachTable([](const std::vector<ExpectedVariant>& rows, EnumParam& param) {
    for (const ExpectedVariant& row : rows) {
      param.value = row.value;
      EXPECT_EQ(savedText(param), "P=" + row.name + "\n");
      param.value = 77;
      EXPECT_EQ(loaded(param, row.name), row.value) << row.name;
    }
  });
}

TEST(Variants, NamesAreLoadedInAnyCaseAndSavedAsStored) {
  forEachTable([](const std::vector<ExpectedVariant>& rows, EnumParam& param) {
    for (const ExpectedVariant& row : rows) {
      EXPECT_EQ(loaded(param, converted(row.name, std::tolower)), row.value) << row.name;
      EXPECT_EQ(loaded(param, converted(row.name, std::toupper)), row.value) << row.name;
      EXPECT_EQ(savedText(param), "P=" + row.name + "\n");
    }
  });
}

TEST(Variants, AValueOutsideEitherEndIsSavedAsTheDefault) {
  forEachTable([](const std::vector<ExpectedVariant>& rows, EnumParam& param) {
    const auto [least, greatest] = std::ranges::minmax(rows, {}, &ExpectedVariant::value);
    for (const int outside : {least.value - 1, greatest.value + 1}) {
      EXPECT_EQ(findVariant(param.variants, outside), nullptr);
      param.value = outside;
      EXPECT_EQ(savedText(param), "P=" + rows.back().name + "\n");
      EXPECT_EQ(param.value, rows.back().value);
    }
  });
}

TEST(Variants, ANonsenseNameIsReportedAndLoadsTheDefault) {
  forEachTable([](const std::vector<ExpectedVariant>& rows, EnumParam& param) {
    ActiveLoadLog log;
    param.value = rows.front().value;
    EXPECT_TRUE(loadText(param, "NO_SUCH_NAME\n"));
    EXPECT_EQ(param.value, rows.back().value);
    EXPECT_EQ(log.reports, std::vector<std::string>{"badValue(P, \"NO_SUCH_NAME\")"});
  });
}

TEST(Variants, ValuesOutOfNumericOrderAreFoundAllTheSame) {
  EXPECT_STREQ(findVariant(PMP_ID_TYPE_VARIANTS, 5)->name, "PMPID_KEY_ID_HEX");
  EXPECT_STREQ(findVariant(ENCODINGS_VARIANTS, 1251)->name, "CONVI_1251");
  EXPECT_STREQ(findVariant(ENCODINGS_VARIANTS, 6)->name, "CONVI_UTF8");
  EXPECT_STREQ(findVariant(IKE_STATUS_VARIANTS, 2)->name, "IKE_STATUS_ENABLED");
}

TEST(Variants, AlwaysNotifyIsMinusOneAndNotALargeCount) {
  ParamGroup group("GROUP");
  EnumParam param(group, "P", 10, ERRNTF_POLICY_VARIANTS);
  EXPECT_EQ(loaded(param, "ERRNTF_POLICY_ALWAYS"), -1);
  EXPECT_EQ(hex(wireBytes(param)), "FF FF FF FF");
  EXPECT_EQ(savedText(param), "P=ERRNTF_POLICY_ALWAYS\n");
}

TEST(Variants, AForcedNatPolicyIsItsPlainOnePlus128) {
  for (const int plain : {1, 2, 3, 4}) {
    const std::string name = findVariant(NATT_POLICY_VARIANTS, plain)->name;
    EXPECT_EQ(findVariant(NATT_POLICY_VARIANTS, plain + 128)->name, name + "_FORCE");
  }
  EXPECT_EQ(findVariant(NATT_POLICY_VARIANTS, 128), nullptr);
}

TEST(Variants, ALookupStopsAtTheClosingRow) {
  EXPECT_EQ(findVariant(UPDATE_SETTING_VARIANTS, 0), nullptr) << "the closing row's own value";
}

}  // namespace
}  // namespace LPARAMS::Server
