#include "lparams/params/mask_param.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/params/load_rows.h"
#include "tests/params/variant_tables.h"
#include "tests/support/param_forms.h"

namespace LPARAMS::Server {
namespace {

using namespace testing_support;
using namespace std::string_literals;

// A record without bits, groups of flags that overlap, one name for two flags, the sign bit.
constexpr int SIGN_BIT = std::numeric_limits<int>::min();
constexpr Variant ODD_FLAGS[] = {
    {0, "NONE"}, {3, "BOTH"},  {1, "ONE"},         {6, "UPPER"},
    {8, "TWIN"}, {16, "twin"}, {SIGN_BIT, "SIGN"}, {0, nullptr},
};

class MaskParamTest : public testing::Test {
 protected:
  std::string savedNames(MaskParam& param, int value) {
    param.value = value;
    const std::string line = savedText(param);
    return line.substr(line.find('='));
  }

  ParamGroup group{"GROUP"};
  MaskParam mask{group, "MASK", 4, FLAGS};
  MaskParam odd{group, "ODD", 1, ODD_FLAGS};
};

TEST_F(MaskParamTest, SavesTheNamesOfItsFlagsInTableOrder) {
  EXPECT_EQ(savedNames(mask, 1), "=ONE\n");
  EXPECT_EQ(savedNames(mask, 5), "=ONE|FOUR\n");
  EXPECT_EQ(savedNames(mask, 7), "=ONE|TWO|FOUR\n");
  EXPECT_EQ(savedText(mask, 2), "        MASK=ONE|TWO|FOUR\n");
}

TEST_F(MaskParamTest, BitsWithoutANameStayInMemoryAndOnTheWireButNotInTheFile) {
  EXPECT_TRUE(readBytes(mask, unhex("0D 00 00 00")).result);
  EXPECT_EQ(savedText(mask), "MASK=ONE|FOUR\n");
  EXPECT_EQ(mask.value, 13);
  EXPECT_EQ(hex(wireBytes(mask)), "0D 00 00 00");
  EXPECT_EQ(savedNames(mask, 8), "=\n");
}

TEST_F(MaskParamTest, AnEmptyNameIsANameLikeAnyOther) {
  constexpr Variant WITH_EMPTY[] = {{1, ""}, {2, "B"}, {4, "C"}, {8, ""}, {0, nullptr}};
  MaskParam empty(group, "EMPTY", 2, WITH_EMPTY);
  EXPECT_EQ(savedNames(empty, 7), "=|B|C\n");
  EXPECT_EQ(savedNames(empty, 9), "=|\n");
  EXPECT_EQ(savedNames(empty, 1), "=\n");
  checkLoads(empty, 4,
             {{"|B|C\n", 15}, {"B|\n", 2}, {"|\n", 9}, {"\n", 2, {"badValue(EMPTY, \"\")"}}});
}

TEST_F(MaskParamTest, ARecordIsSavedIfItSharesABitWithWhatIsLeft) {
  EXPECT_EQ(savedNames(odd, 1), "=BOTH\n");
  EXPECT_EQ(savedNames(odd, 3), "=BOTH\n");
  EXPECT_EQ(savedNames(odd, 7), "=BOTH|UPPER\n");
  EXPECT_EQ(savedNames(odd, 4), "=UPPER\n");
  EXPECT_EQ(savedNames(odd, 24), "=TWIN|twin\n");
}

TEST_F(MaskParamTest, ARecordWithoutBitsIsNeverSaved) {
  EXPECT_EQ(savedNames(odd, 0), "=\n");
  EXPECT_EQ(savedNames(odd, -1), "=BOTH|UPPER|TWIN|twin|SIGN\n");
}

TEST_F(MaskParamTest, TheSignBitIsAFlagLikeAnyOther) {
  EXPECT_EQ(savedNames(odd, SIGN_BIT), "=SIGN\n");
  EXPECT_EQ(hex(wireBytes(odd)), "00 00 00 80");
  checkLoads(odd, 0, {{"SIGN|ONE\n", SIGN_BIT + 1}});
}

TEST_F(MaskParamTest, LoadCollectsTheNamedFlagsInAnyOrderAndCase) {
  checkLoads(mask, 2,
             {{"ONE\nnext", 1, {}, "next"},
              {"FOUR|ONE\n", 5},
              {"four|One", 5},
              {"TWO|TWO\n", 2},
              {"TWO|\n", 2},
              {"|TWO\n", 2},
              {"ONE||TWO\n", 3}});
}

TEST_F(MaskParamTest, LoadTakesEveryRecordOfAName) { checkLoads(odd, 0, {{"Twin\n", 24}}); }

TEST_F(MaskParamTest, LoadIgnoresUnknownPiecesBesideAKnownOne) {
  checkLoads(mask, 2, {{"bogus|ONE| TWO|4\n", 1}, {"ONE|TWO\r\n", 1}, {"TWO\0|ONE\n"s, 1}});
}

TEST_F(MaskParamTest, LoadOfNoFlagReportsTheLineAndTakesTheDefault) {
  checkLoads(mask, 2,
             {{"bogus\nnext", 4, {"badValue(MASK, \"bogus\")"}, "next"},
              {"|\n", 4, {"badValue(MASK, \"|\")"}},
              {"ONE\r\n", 4, {"badValue(MASK, \"ONE\\r\")"}},
              {"1\n", 4, {"badValue(MASK, \"1\")"}},
              {"\nnext", 4, {"badValue(MASK, \"\")"}, "next"},
              {"", 4, {"badValue(MASK, \"\")"}}});
  checkLoads(odd, 2, {{"NONE\n", 1, {"badValue(ODD, \"NONE\")"}}});
}

// Kept: after a load a mask is never 0.
TEST_F(MaskParamTest, AnEmptySetIsSavedAsNothingAndLoadedAsTheDefault) {
  EXPECT_EQ(savedNames(mask, 0), "=\n");
  EXPECT_EQ(mask.value, 0);
  checkLoads(mask, 0, {{"\n", 4, {"badValue(MASK, \"\")"}}});
}

TEST_F(MaskParamTest, WithoutALoadLogABadValueTakesTheDefaultSilently) {
  mask.value = 2;
  EXPECT_TRUE(loadText(mask, "bogus\n"));
  EXPECT_EQ(mask.value, 4);
}

}  // namespace
}  // namespace LPARAMS::Server
