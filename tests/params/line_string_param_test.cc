#include "lparams/params/line_string_param.h"

#include <gtest/gtest.h>

#include "tests/params/load_rows.h"
#include "tests/support/param_forms.h"

namespace LPARAMS::Server {
namespace {

using namespace testing_support;
using namespace std::string_literals;

/// Both classes, which differ in nothing but their type identifier.
template <typename P>
class LineStringParamTest : public testing::Test {
 protected:
  ParamGroup group{"GROUP"};
  P text{group, "TEXT", "old"};
};

using Classes = testing::Types<StStParam, QcdSParam>;
TYPED_TEST_SUITE(LineStringParamTest, Classes);

TYPED_TEST(LineStringParamTest, LoadTakesTheWholeRestOfTheLineAndReportsNothing) {
  checkLoads(this->text, "old",
             {{"new\nnext", "new", {}, "next"},
              {"new", "new"},
              {" two  words \nnext", " two  words ", {}, "next"},
              {"\t\"q\\\"=|/end=\n", "\t\"q\\\"=|/end="},
              {"k\xE9y\xFF\0x\n"s, "k\xE9y\xFF\0x"s}});
}

TYPED_TEST(LineStringParamTest, LoadOfAnEmptyLineGivesTheEmptyStringAndLeavesTheNextLine) {
  checkLoads(this->text, "old", {{"\nNEXT=1\n", "", {}, "NEXT=1\n"}});
}

TYPED_TEST(LineStringParamTest, LoadOfALineThatIsMissingGivesTheEmptyString) {
  checkLoads(this->text, "old", {{"", ""}});
}

// Kept: only numbers and plain strings report the carriage return.
TYPED_TEST(LineStringParamTest, LoadKeepsACarriageReturn) {
  checkLoads(this->text, "old", {{"new\r\nnext", "new\r", {}, "next"}, {"\r\n", "\r"}});
}

TYPED_TEST(LineStringParamTest, BlanksAndEmptinessSurviveTheFile) {
  for (const char* value : {"", " ", "a b ", "  a"}) {
    this->text.value = value;
    const std::string line = savedText(this->text, 1);
    EXPECT_EQ(line, "    TEXT="s + value + "\n");
    checkLoads(this->text, "old", {{line.substr(9), value}});
  }
}

// Kept: nothing is quoted.
TYPED_TEST(LineStringParamTest, AValueWithANewlineIsSavedOverTwoLinesAndLoadsAsTheFirst) {
  EXPECT_TRUE(readBytes(this->text, unhex("03 00 00 00 61 0A 62")).result);
  EXPECT_EQ(savedText(this->text), "TEXT=a\nb\n");
  checkLoads(this->text, "old", {{"a\nb\n", "a", {}, "b\n"}});
}

TYPED_TEST(LineStringParamTest, TheSecondLineOfAValueIsTakenForAKeyWithTheLineBelowIt) {
  TypeParam below(this->group, "BELOW", "old");
  this->text.value = "a\nb";
  const std::string block = savedText(this->group);
  ActiveLoadLog log;
  EXPECT_TRUE(loadText(this->group, block.substr(block.find('=') + 1)));
  EXPECT_EQ(this->text.value, "a");
  EXPECT_THAT(log.reports, testing::ElementsAre("unknownParam(\"b\\n    BELOW\", GROUP)",
                                                "paramsMissing(1, 2, GROUP)"));
}

TYPED_TEST(LineStringParamTest, TheWireFormIsLengthAndBytes) {
  this->text.value = "a\0 "s;
  EXPECT_EQ(hex(wireBytes(this->text)), "03 00 00 00 61 00 20");
  EXPECT_TRUE(readBytes(this->text, unhex("00 00 00 00")).result);
  EXPECT_EQ(this->text.value, "");
}

TYPED_TEST(LineStringParamTest, ReadingPastTheEndThrowsAndKeepsTheValue) {
  for (const char* bytes : {"", "01 00 00", "01 00 00 00", "FC FF FF FF 61"}) {
    EXPECT_EQ(readBytes(this->text, unhex(bytes)).thrown, "CommandStreamError") << bytes;
  }
  EXPECT_EQ(this->text.value, "old");
}

}  // namespace
}  // namespace LPARAMS::Server
