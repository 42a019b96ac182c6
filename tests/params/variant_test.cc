#include "lparams/params/variant.h"

#include <gtest/gtest.h>

#include <string>

namespace LPARAMS::Server {
namespace {

using namespace std::string_literals;

constexpr Variant EMPTY[] = {{0, nullptr}};

TEST(FindVariant, TakesTheFirstRecordWithTheValue) {
  constexpr Variant TABLE[] = {{1, "ONE"}, {2, "TWO"}, {1, "UNO"}, {-1, "MINUS"}, {0, nullptr}};
  EXPECT_STREQ(findVariant(TABLE, 1)->name, "ONE");
  EXPECT_EQ(findVariant(TABLE, 2), &TABLE[1]);
  EXPECT_EQ(findVariant(TABLE, -1), &TABLE[3]);
}

TEST(FindVariant, NeverMatchesOrPassesTheClosingRecord) {
  constexpr Variant TABLE[] = {{1, "ONE"}, {0, nullptr}, {2, "BEYOND"}, {0, "BEYOND_ZERO"}};
  EXPECT_EQ(findVariant(TABLE, 0), nullptr);
  EXPECT_EQ(findVariant(TABLE, 2), nullptr);
  EXPECT_EQ(findVariant(EMPTY, 0), nullptr);
}

TEST(EqualNames, IgnoresTheCaseOfAsciiLetters) {
  EXPECT_TRUE(equalNames("_LL_DETAILS", "_ll_Details"));
  EXPECT_TRUE(equalNames("ABCDEFGHIJKLMNOPQRSTUVWXYZ", "abcdefghijklmnopqrstuvwxyz"));
  EXPECT_TRUE(equalNames("", ""));
}

TEST(EqualNames, ComparesTheWholeLength) {
  EXPECT_FALSE(equalNames("ONE", "ONES"));
  EXPECT_FALSE(equalNames("ONES", "ONE"));
  EXPECT_FALSE(equalNames("", "ONE"));
  EXPECT_FALSE(equalNames("ONE\0"s, "ONE"));
  EXPECT_FALSE(equalNames("ONE\0X"s, "ONE"));
}

TEST(EqualNames, LeavesEverythingButAsciiLettersAlone) {
  EXPECT_FALSE(equalNames("@", "`"));
  EXPECT_FALSE(equalNames("[", "{"));
  EXPECT_FALSE(equalNames("\xC4", "\xE4"));
  EXPECT_FALSE(equalNames("A", "\xC1"));
  EXPECT_TRUE(equalNames("\xE4", "\xE4"));
}

constexpr Variant GOOD[] = {{5, "FIVE"}, {0, "ZERO"}, {0, nullptr}};
constexpr Variant NOT_CLOSED[] = {{5, "FIVE"}, {0, "ZERO"}};
constexpr Variant CLOSED_EARLY[] = {{5, "FIVE"}, {0, nullptr}, {0, nullptr}};
constexpr Variant VALUE_TWICE[] = {{5, "FIVE"}, {5, "ZERO"}, {0, nullptr}};
constexpr Variant NAME_TWICE[] = {{5, "FIVE"}, {0, "FIVE"}, {0, nullptr}};
constexpr Variant ODD_CLOSE[] = {{5, "FIVE"}, {1, nullptr}};
static_assert(isVariantTable(GOOD) && isVariantTable(EMPTY));
static_assert(!isVariantTable(NOT_CLOSED) && !isVariantTable(CLOSED_EARLY));
static_assert(!isVariantTable(VALUE_TWICE) && !isVariantTable(NAME_TWICE));
static_assert(!isVariantTable(ODD_CLOSE));

}  // namespace
}  // namespace LPARAMS::Server
