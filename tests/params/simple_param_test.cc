#include "lparams/params/simple_param.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/params/load_rows.h"
#include "tests/support/param_forms.h"

namespace LPARAMS::Server {
namespace {

using namespace testing_support;
using namespace std::string_literals;

/// A value, the text behind its "=" and its bytes on the wire.
template <typename T>
struct FormRow {
  T value;
  std::string text;
  std::string bytes;
};

/// Saves and writes each value, and reads the bytes back.
template <typename P>
void checkForms(P& param, const std::vector<FormRow<decltype(P::value)>>& rows) {
  for (const auto& row : rows) {
    SCOPED_TRACE("value " + inQuotes(row.text));
    const auto before = param.value;
    param.value = row.value;
    EXPECT_EQ(savedText(param), std::string(param.name) + "=" + row.text + "\n");
    EXPECT_EQ(hex(wireBytes(param)), row.bytes);

    param.value = before;
    const std::string bytes = unhex(row.bytes);
    const ReadResult read = readBytes(param, bytes + "more");
    EXPECT_TRUE(read.result);
    EXPECT_EQ(read.position, bytes.size());
    EXPECT_EQ(param.value, row.value);
  }
}

class SimpleParamTest : public testing::Test {
 protected:
  ParamGroup group{"GROUP"};
  SimpleParam<bool, 0> flag{group, "FLAG", false};
  SimpleParam<unsigned short, 1> port{group, "PORT", 7};
  SimpleParam<unsigned int, 2> count{group, "COUNT", 7};
  SimpleParam<int, 4> number{group, "NUMBER", -7};
  SimpleParam<std::string, 6> word{group, "WORD", "old"};
  SimpleParam<std::string, 10> secret{group, "SECRET", "old"};
};

TEST_F(SimpleParamTest, StartsWithItsDefaultInBothLists) {
  EXPECT_EQ(flag.value, false);
  EXPECT_EQ(port.value, 7);
  EXPECT_EQ(count.value, 7u);
  EXPECT_EQ(number.value, -7);
  EXPECT_EQ(word.value, "old");
  EXPECT_EQ(secret.value, "old");
  const std::list<Param*> all{&flag, &port, &count, &number, &word, &secret};
  EXPECT_EQ(group.fileParams, all);
  EXPECT_EQ(group.wireParams, all);
}

TEST_F(SimpleParamTest, TextAndBytesOfABool) {
  checkForms(flag, {{true, "1", "01"}, {false, "0", "00"}});
}

TEST_F(SimpleParamTest, TextAndBytesOfAnUnsignedShort) {
  checkForms(port, {{0, "0", "00 00"}, {500, "500", "F4 01"}, {65535, "65535", "FF FF"}});
}

TEST_F(SimpleParamTest, TextAndBytesOfAnUnsignedInt) {
  checkForms(count, {{0, "0", "00 00 00 00"},
                     {10485760, "10485760", "00 00 A0 00"},
                     {4294967295, "4294967295", "FF FF FF FF"}});
}

TEST_F(SimpleParamTest, TextAndBytesOfAnInt) {
  checkForms(number, {{-5, "-5", "FB FF FF FF"},
                      {0, "0", "00 00 00 00"},
                      {2147483647, "2147483647", "FF FF FF 7F"},
                      {std::numeric_limits<int>::min(), "-2147483648", "00 00 00 80"}});
}

TEST_F(SimpleParamTest, TextAndBytesOfBothKindsOfString) {
  const std::vector<FormRow<std::string>> rows = {
      {"", "", "00 00 00 00"},
      {"two words ", "two words ", "0A 00 00 00 74 77 6F 20 77 6F 72 64 73 20"},
      {"\"q\\\"|=", "\"q\\\"|=", "06 00 00 00 22 71 5C 22 7C 3D"},
      {"a\nb", "a\nb", "03 00 00 00 61 0A 62"},
      {"\0\xFF"s, "\0\xFF"s, "02 00 00 00 00 FF"},
  };
  checkForms(word, rows);
  checkForms(secret, rows);
}

TEST_F(SimpleParamTest, ReadingPastTheEndThrowsAndKeepsTheValue) {
  const std::string before = savedText(group);
  for (Param* param : group.fileParams) {
    const std::string bytes = wireBytes(*param);
    for (size_t length = 0; length < bytes.size(); ++length) {
      EXPECT_EQ(readBytes(*param, bytes.substr(0, length)).thrown, "CommandStreamError")
          << param->name << ", " << length << " bytes";
    }
  }
  EXPECT_EQ(savedText(group), before);
}

TEST_F(SimpleParamTest, LoadOfABoolTakesTheNumbersZeroAndOneOnly) {
  checkLoads(flag, false, {{"1\nnext", true, {}, "next"}, {"1", true}, {" \t01\n", true}});
  checkLoads(flag, true, {{"0\n", false}, {"-0\n", false}, {"00\n", false}});
  for (const bool before : {false, true}) {
    checkLoads(flag, before,
               {{"true\n", before, {"badValue(FLAG, \"true\")"}},
                {"false\n", before, {"badValue(FLAG, \"false\")"}},
                {"2\n", before, {"badValue(FLAG, \"\")"}},
                {"10 x\n", before, {"badValue(FLAG, \" x\")"}},
                {"-1\n", before, {"badValue(FLAG, \"\")"}},
                {"", before, {"badValue(FLAG, \"\")"}}});
  }
  checkLoads(flag, false,
             {{"1 x\n", true, {"extraText(FLAG, \" x\")"}},
              {"1\r\n", true, {"extraText(FLAG, \"\\r\")"}}});
}

TEST_F(SimpleParamTest, LoadOfANumberTakesTheLongestDecimalNumber) {
  checkLoads(count, 7,
             {{"500\nnext", 500, {}, "next"},
              {"500", 500},
              {" \t\v\f500\n", 500},
              {"+5\n", 5},
              {"0500\n", 500},
              {"000000000000000000000500\n", 500},
              {"4294967295\n", 4294967295},
              {"500 x\n", 500, {"extraText(COUNT, \" x\")"}},
              {"500\r\nnext", 500, {"extraText(COUNT, \"\\r\")"}, "next"},
              {"500 \n", 500, {"extraText(COUNT, \" \")"}},
              {"0x10\n", 0, {"extraText(COUNT, \"x10\")"}},
              {"1,000\n", 1, {"extraText(COUNT, \",000\")"}},
              {"1.5\n", 1, {"extraText(COUNT, \".5\")"}},
              {"1e3\n", 1, {"extraText(COUNT, \"e3\")"}},
              {"1-1\n", 1, {"extraText(COUNT, \"-1\")"}},
              {"1\xB2\0\n"s, 1, {"extraText(COUNT, \"\\xB2\\x00\")"}}});
}

TEST_F(SimpleParamTest, LoadOfWhatIsNoNumberKeepsTheValue) {
  checkLoads(count, 7,
             {{"abc\nnext", 7, {"badValue(COUNT, \"abc\")"}, "next"},
              {"x 5\n", 7, {"badValue(COUNT, \"x 5\")"}},
              {"\xFF\n", 7, {"badValue(COUNT, \"\\xFF\")"}},
              {"\0005\n"s, 7, {"badValue(COUNT, \"\\x005\")"}},
              {"- 5\n", 7, {"badValue(COUNT, \" 5\")"}},
              {"+\n", 7, {"badValue(COUNT, \"\")"}},
              {"--5\n", 7, {"badValue(COUNT, \"-5\")"}},
              {"", 7, {"badValue(COUNT, \"\")"}},
              {"  ", 7, {"badValue(COUNT, \"\")"}}});
}

TEST_F(SimpleParamTest, LoadOfANumberOutOfTheTypesRangeKeepsTheValue) {
  checkLoads(count, 7,
             {{"4294967296\n", 7, {"badValue(COUNT, \"\")"}},
              {"99999999999999999999999 x\n", 7, {"badValue(COUNT, \" x\")"}},
              {"-4294967296\n", 7, {"badValue(COUNT, \"\")"}}});
  checkLoads(port, 7,
             {{"65535\n", 65535},
              {"65536\n", 7, {"badValue(PORT, \"\")"}},
              {"-65536\n", 7, {"badValue(PORT, \"\")"}}});
  checkLoads(number, -7,
             {{"2147483647\n", 2147483647},
              {"-2147483648\n", std::numeric_limits<int>::min()},
              {"2147483648\n", -7, {"badValue(NUMBER, \"\")"}},
              {"-2147483649\n", -7, {"badValue(NUMBER, \"\")"}},
              {"9999999999999999999\n", -7, {"badValue(NUMBER, \"\")"}}});
}

TEST_F(SimpleParamTest, LoadFromAStreamThatHasFailedKeepsTheValueAndGetsTheStreamGoing) {
  const std::string before = savedText(group);
  for (const std::ios::iostate failure : {std::ios::failbit, std::ios::badbit}) {
    for (Param* param : group.fileParams) {
      ActiveLoadLog log;
      std::istringstream is("1\nnext");
      is.setstate(failure);
      EXPECT_TRUE(param->load(is));
      EXPECT_EQ(log.reports,
                std::vector<std::string>{std::string("badValue(") + param->name + ", \"1\")"});
      EXPECT_EQ(unreadText(is), "next");
    }
  }
  EXPECT_EQ(savedText(group), before);
}

TEST_F(SimpleParamTest, LoadOfAnIntTakesASign) {
  checkLoads(
      number, -7,
      {{"-5\n", -5}, {"+5\n", 5}, {"-0\n", 0}, {"-abc\n", -7, {"badValue(NUMBER, \"abc\")"}}});
}

// Kept as formatted input has it: a sign wraps an unsigned number.
TEST_F(SimpleParamTest, LoadOfANegativeUnsignedNumberWrapsIt) {
  checkLoads(count, 7, {{"-1\n", 4294967295}, {"-4294967295\n", 1}, {"-0\n", 0}});
  checkLoads(port, 7, {{"-1\n", 65535}, {"-65535\n", 1}});
}

// Kept as formatted input has it: an empty line is white space before the value.
TEST_F(SimpleParamTest, LoadOfAnEmptyNumberContinuesOnTheNextLine) {
  checkLoads(count, 7,
             {{"\nNEXT=1\nLAST=2\n", 7, {"badValue(COUNT, \"NEXT=1\")"}, "LAST=2\n"},
              {"\n\n  5 x\nLAST=2\n", 5, {"extraText(COUNT, \" x\")"}, "LAST=2\n"}});
  checkLoads(flag, false,
             {{"\nNEXT=1\nLAST=2\n", false, {"badValue(FLAG, \"NEXT=1\")"}, "LAST=2\n"}});
}

TEST_F(SimpleParamTest, LoadOfAStringTakesOneWord) {
  const std::vector<LoadRow<std::string>> rows = {
      {"new\nnext", "new", {}, "next"},       {"new", "new"},       {" \tnew\n", "new"},
      {"k\xE9y=\xA0|\"\n", "k\xE9y=\xA0|\""}, {"a\0b\n"s, "a\0b"s},
  };
  checkLoads(word, "old", rows);
  checkLoads(secret, "old", rows);
  checkLoads(word, "old",
             {{"two words\nnext", "two", {"extraText(WORD, \" words\")"}, "next"},
              {"new\r\n", "new", {"extraText(WORD, \"\\r\")"}},
              {"a\fb\n", "a", {"extraText(WORD, \"\\x0Cb\")"}},
              {"", "old", {"badValue(WORD, \"\")"}}});
  checkLoads(secret, "old", {{"two words\n", "two", {"extraText(SECRET, \" words\")"}}});
}

// Kept: StStParam is the class for values that may be empty.
TEST_F(SimpleParamTest, LoadOfAnEmptyStringSwallowsTheFirstWordOfTheNextLine) {
  checkLoads(word, "old",
             {{"\nNEXT=1\nLAST=2\n", "NEXT=1", {}, "LAST=2\n"},
              {"\n    NEXT=a b\nLAST=2\n", "NEXT=a", {"extraText(WORD, \" b\")"}, "LAST=2\n"}});
}

// Kept: a plain string with a blank does not survive the file.
TEST_F(SimpleParamTest, AStringOfTwoWordsIsSavedWholeAndLoadedAsTheFirst) {
  word.value = "two words";
  const std::string line = savedText(word);
  EXPECT_EQ(line, "WORD=two words\n");
  checkLoads(word, "old", {{line.substr(5), "two", {"extraText(WORD, \" words\")"}}});
}

}  // namespace
}  // namespace LPARAMS::Server
