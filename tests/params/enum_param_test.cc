#include "lparams/params/enum_param.h"

#include <gtest/gtest.h>

#include "lparams/params/text_stream.h"
#include "tests/params/load_rows.h"
#include "tests/support/param_forms.h"

namespace LPARAMS::Server {
namespace {

using namespace testing_support;
using namespace std::string_literals;

constexpr Variant LEVELS[] = {
    {0, "_LL_DISABLED"}, {1, "_LL_EVENTS"}, {2, "_LL_DETAILS"}, {-1, "_LL_ALL"}, {0, nullptr},
};

// No value 9, two records of value 1, two records of one name.
constexpr Variant ODD_TABLE[] = {{1, "ONE"}, {1, "UNO"}, {2, "TWIN"}, {3, "twin"}, {0, nullptr}};

class EnumParamTest : public testing::Test {
 protected:
  ParamGroup group{"GROUP"};
  EnumParam level{group, "LEVEL", 0, LEVELS};
  EnumParam odd{group, "ODD", 9, ODD_TABLE};
};

TEST_F(EnumParamTest, StartsWithItsDefaultAsValueToo) {
  EnumParam details(group, "DETAILS", 2, LEVELS);
  EXPECT_EQ(details.value, 2);
  EXPECT_EQ(details.defaultValue, 2);
  EXPECT_EQ(details.variants, LEVELS);
}

TEST_F(EnumParamTest, SavesTheNameAndSendsTheNumber) {
  level.value = 2;
  EXPECT_EQ(savedText(level, 1), "    LEVEL=_LL_DETAILS\n");
  EXPECT_EQ(hex(wireBytes(level)), "02 00 00 00");
  level.value = -1;
  EXPECT_EQ(savedText(level), "LEVEL=_LL_ALL\n");
  EXPECT_EQ(hex(wireBytes(level)), "FF FF FF FF");
}

TEST_F(EnumParamTest, AValueFromTheWireIsNotChecked) {
  EXPECT_TRUE(readBytes(level, unhex("07 00 00 00")).result);
  EXPECT_EQ(level.value, 7);
  EXPECT_EQ(hex(wireBytes(level)), "07 00 00 00");
}

TEST_F(EnumParamTest, ATruncatedValueThrowsAndKeepsTheOldOne) {
  EXPECT_EQ(readBytes(level, unhex("01 00 00")).thrown, "CommandStreamError");
  EXPECT_EQ(level.value, 0);
}

// Kept: saving corrects the parameter in memory.
TEST_F(EnumParamTest, SavingAValueWithoutANameResetsItToTheDefault) {
  EnumParam events(group, "EVENTS", 1, LEVELS);
  readBytes(events, unhex("07 00 00 00"));
  EXPECT_EQ(savedText(events), "EVENTS=_LL_EVENTS\n");
  EXPECT_EQ(events.value, 1);
  EXPECT_EQ(hex(wireBytes(events)), "01 00 00 00");
}

TEST_F(EnumParamTest, ADefaultWithoutANameIsSavedAsNothing) {
  odd.value = 7;
  EXPECT_EQ(savedText(odd), "ODD=\n");
  EXPECT_EQ(odd.value, 9);
}

TEST_F(EnumParamTest, ATableWithoutRecordsNamesNothing) {
  static constexpr Variant EMPTY[] = {{0, nullptr}};
  EnumParam empty(group, "EMPTY", 0, EMPTY);
  EXPECT_EQ(savedText(empty), "EMPTY=\n");
  checkLoads(empty, 5,
             {{"\n", 0, {"badValue(EMPTY, \"\")"}}, {"0\n", 0, {"badValue(EMPTY, \"0\")"}}});
}

TEST_F(EnumParamTest, TheFirstOfTwoRecordsWithOneValueOrNameWins) {
  odd.value = 1;
  EXPECT_EQ(savedText(odd), "ODD=ONE\n");
  checkLoads(odd, 9, {{"UNO\n", 1}, {"twin\n", 2}, {"TWIN\n", 2}});
}

TEST_F(EnumParamTest, LoadTakesANameInAnyCase) {
  checkLoads(level, 0,
             {{"_LL_DETAILS\nnext", 2, {}, "next"},
              {"_ll_details\n", 2},
              {"_Ll_DeTaIlS\n", 2},
              {"_LL_ALL", -1}});
}

TEST_F(EnumParamTest, LoadTakesTheFirstPieceThatIsAName) {
  checkLoads(level, 0,
             {{"bogus|_LL_EVENTS\n", 1},
              {"_LL_DETAILS|_LL_EVENTS\n", 2},
              {"_LL_EVENTS|bogus\n", 1},
              {"_LL_EVENTS|\n", 1},
              {"||_LL_EVENTS\n", 1},
              {"_LL_EVENTS |_LL_DETAILS\n", 2},
              {"_LL_EVENTS|_LL_DETAILS\r\n", 1}});
}

TEST_F(EnumParamTest, LoadOfNoNameReportsTheLineAndTakesTheDefault) {
  EnumParam events(group, "EVENTS", 1, LEVELS);
  checkLoads(events, 2,
             {{"bogus\nnext", 1, {"badValue(EVENTS, \"bogus\")"}, "next"},
              {"bogus|\xFF\n", 1, {"badValue(EVENTS, \"bogus|\\xFF\")"}},
              {"|\n", 1, {"badValue(EVENTS, \"|\")"}},
              {"\nnext", 1, {"badValue(EVENTS, \"\")"}, "next"},
              {"", 1, {"badValue(EVENTS, \"\")"}}});
}

TEST_F(EnumParamTest, LoadDoesNotTakeNumbers) {
  checkLoads(level, 2,
             {{"2\n", 0, {"badValue(LEVEL, \"2\")"}}, {"-1\n", 0, {"badValue(LEVEL, \"-1\")"}}});
}

TEST_F(EnumParamTest, LoadDoesNotTrimPieces) {
  checkLoads(level, 2,
             {{" _LL_EVENTS\n", 0, {"badValue(LEVEL, \" _LL_EVENTS\")"}},
              {"_LL_EVENTS \n", 0, {"badValue(LEVEL, \"_LL_EVENTS \")"}},
              {"_LL_EVENTS\r\n", 0, {"badValue(LEVEL, \"_LL_EVENTS\\r\")"}}});
}

TEST_F(EnumParamTest, LoadComparesWholePieces) {
  checkLoads(level, 2,
             {{"_LL_EVENT\n", 0, {"badValue(LEVEL, \"_LL_EVENT\")"}},
              {"_LL_EVENTSX\n", 0, {"badValue(LEVEL, \"_LL_EVENTSX\")"}},
              {"_LL_EVENTS\0\n"s, 0, {"badValue(LEVEL, \"_LL_EVENTS\\x00\")"}},
              {"_LL_EVENT\xD3\n", 0, {"badValue(LEVEL, \"_LL_EVENT\\xD3\")"}}});
}

TEST_F(EnumParamTest, AnEmptyTextNamesNothingAndAnEmptyPieceAnEmptyName) {
  constexpr Variant WITH_EMPTY[] = {{3, ""}, {4, "FOUR"}, {0, nullptr}};
  EnumParam odd(group, "ODD", 9, WITH_EMPTY);
  checkLoads(odd, 4,
             {{"\nnext", 9, {"badValue(ODD, \"\")"}, "next"},
              {"", 9, {"badValue(ODD, \"\")"}},
              {"|\n", 3},
              {"bogus|\n", 3},
              {"|FOUR\n", 3},
              {"FOUR|\n", 4}});
}

/// Takes nothing.
class RefusingBuffer : public std::streambuf {};

TEST_F(EnumParamTest, SavingToAStreamThatThrowsAtTheHeadKeepsTheValue) {
  RefusingBuffer buffer;
  std::ostream os(&buffer);
  os.exceptions(std::ios::badbit);
  level.value = 7;
  EXPECT_THROW(level.save(os, 1), std::ios::failure);
  EXPECT_EQ(level.value, 7);
}

TEST_F(EnumParamTest, AValueWithoutANameIsSavedAsOneLineToo) {
  level.value = 7;
  EXPECT_EQ(savedText(level, 2), "        LEVEL=_LL_DISABLED\n");
  EXPECT_EQ(level.value, 0);
  level.value = 7;
  TextStream text(0);
  EXPECT_TRUE(level.save(text, 2));
  EXPECT_EQ(text.take(), "        LEVEL=_LL_DISABLED\n");
}

TEST_F(EnumParamTest, WithoutALoadLogABadValueTakesTheDefaultSilently) {
  level.value = 2;
  EXPECT_TRUE(loadText(level, "bogus\n"));
  EXPECT_EQ(level.value, 0);
}

}  // namespace
}  // namespace LPARAMS::Server
