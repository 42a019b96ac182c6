#include "lparams/params/numeric_param.h"

#include <gtest/gtest.h>

#include "tests/params/load_rows.h"
#include "tests/support/param_forms.h"

namespace LPARAMS::Server {
namespace {

using namespace testing_support;

class NumericParamTest : public testing::Test {
 protected:
  ParamGroup group{"GROUP"};
  UIntParam count{group, "COUNT", Default{5}, Range{3, 60}};
  UIntParam ten{group, "TEN", Default{5}, Range{0, 10}};
  UIntParam anyCount{group, "ANY_COUNT", Default{5}, Range{0, 4294967295}};
  PortParam port{group, "PORT", Default{500}, Range{1, 65535}};
  PortParam anyPort{group, "ANY_PORT", Default{500}, Range{0, 65535}};
};

TEST_F(NumericParamTest, StartsWithItsDefaultAndItsLimits) {
  EXPECT_EQ(count.value, 5u);
  EXPECT_EQ(count.min, 3u);
  EXPECT_EQ(count.max, 60u);
  EXPECT_EQ(port.value, 500);
  EXPECT_EQ(port.min, 1);
  EXPECT_EQ(port.max, 65535);
}

TEST_F(NumericParamTest, ADefaultOutOfTheRangeIsLeftAlone) {
  const UIntParam odd(group, "ODD", Default{99}, Range{3, 60});
  EXPECT_EQ(odd.value, 99u);
}

TEST_F(NumericParamTest, LoadMovesAValueSilentlyToTheNearerLimit) {
  checkLoads(count, 5, {{"0\n", 3}, {"2\n", 3}, {"61\n", 60}, {"4294967295\n", 60}});
  checkLoads(port, 500, {{"0\nnext", 1, {}, "next"}});
}

TEST_F(NumericParamTest, LoadKeepsTheLimitsThemselves) {
  checkLoads(count, 5, {{"3\n", 3}, {"60\n", 60}, {"4\n", 4}, {"59\n", 59}});
  checkLoads(port, 500, {{"1\n", 1}, {"65535\n", 65535}});
  checkLoads(anyCount, 5, {{"0\n", 0}, {"4294967295\n", 4294967295}});
}

TEST_F(NumericParamTest, LoadOfANumberTooLargeForTheTypeKeepsTheValue) {
  checkLoads(anyPort, 500,
             {{"70000\n", 500, {"badValue(ANY_PORT, \"\")"}},
              {"65536\n", 500, {"badValue(ANY_PORT, \"\")"}}});
  checkLoads(count, 5, {{"4294967296\n", 5, {"badValue(COUNT, \"\")"}}});
}

// Kept as formatted input has it: the sign wraps the number first, then the limit applies.
TEST_F(NumericParamTest, LoadOfMinusOneEndsAtTheUpperLimit) {
  checkLoads(count, 5, {{"-1\n", 60}});
  checkLoads(anyCount, 5, {{"-1\n", 4294967295}});
  checkLoads(port, 500, {{"-1\n", 65535}});
}

TEST_F(NumericParamTest, LoadReportsTextAndClampsAllTheSame) {
  checkLoads(
      count, 5,
      {{"500 x\n", 60, {"extraText(COUNT, \" x\")"}}, {"0\r\n", 3, {"extraText(COUNT, \"\\r\")"}}});
  checkLoads(
      port, 500,
      {{"abc\n", 500, {"badValue(PORT, \"abc\")"}}, {"400 x\n", 400, {"extraText(PORT, \" x\")"}}});
}

TEST_F(NumericParamTest, ABadValueClampsThePreviousValueToo) {
  checkLoads(count, 1000, {{"abc\n", 60, {"badValue(COUNT, \"abc\")"}}});
  checkLoads(count, 0, {{"abc\n", 3, {"badValue(COUNT, \"abc\")"}}});
}

// Kept: the range belongs to the settings file alone.
TEST_F(NumericParamTest, AValueFromTheWireIsTakenSavedAndSentAsItStands) {
  EXPECT_TRUE(readBytes(ten, unhex("FF FF FF FF")).result);
  EXPECT_EQ(ten.value, 4294967295u);
  EXPECT_EQ(savedText(ten), "TEN=4294967295\n");
  EXPECT_EQ(hex(wireBytes(ten)), "FF FF FF FF");

  EXPECT_TRUE(readBytes(port, unhex("00 00")).result);
  EXPECT_EQ(port.value, 0);
  EXPECT_EQ(savedText(port), "PORT=0\n");
}

TEST_F(NumericParamTest, TheNextLoadCorrectsAValueFromTheWire) {
  readBytes(ten, unhex("FF FF FF FF"));
  loadText(ten, savedText(ten).substr(4));
  EXPECT_EQ(ten.value, 10u);
}

TEST_F(NumericParamTest, ReadingPastTheEndThrowsAndKeepsTheValue) {
  EXPECT_EQ(readBytes(count, unhex("01 02 03")).thrown, "CommandStreamError");
  EXPECT_EQ(count.value, 5u);
  EXPECT_EQ(readBytes(port, unhex("01")).thrown, "CommandStreamError");
  EXPECT_EQ(port.value, 500);
}

TEST_F(NumericParamTest, ABoolParamIsAPlainBool) {
  BoolParam flag(group, "FLAG", true);
  EXPECT_EQ(savedText(flag), "FLAG=1\n");
  EXPECT_EQ(hex(wireBytes(flag)), "01");
  readBytes(flag, unhex("02"));
  EXPECT_FALSE(flag.value);
  checkLoads(flag, false, {{"1\n", true}, {"true\n", false, {"badValue(FLAG, \"true\")"}}});
}

}  // namespace
}  // namespace LPARAMS::Server
