// The tables of named values against the independent ones.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>

#include "lparams/catalogue/catalogue.h"
#include "tests/catalogue/expected_groups.h"
#include "tests/support/param_forms.h"
#include "tests/support/readable_bytes.h"
#include "tests/support/recording_load_log.h"

namespace LPARAMS::Server {
namespace {

using namespace testing_support;

/// A parameter over each table in turn, whose default is the table's last row.
template <typename Check>
void forEachTable(Check check) {
  for (const ExpectedTable& expected : expectedTables()) {
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
  for (const ExpectedTable& expected : expectedTables()) {
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

TEST(Variants, NoTableOfTheCatalogueIsLeftOut) {
  size_t enumerations = 0;
  forEachParam([&](const ExpectedParam&, Param& param) {
    const auto* const enumeration = dynamic_cast<EnumParam*>(&param);
    if (enumeration == nullptr) return;
    ++enumerations;
    EXPECT_EQ(std::ranges::count(expectedTables(), enumeration->variants, &ExpectedTable::table), 1)
        << param.name << ": its table belongs into expectedTables()";
  });
  EXPECT_GE(enumerations, expectedTables().size());
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
