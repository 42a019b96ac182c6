// Whole groups in the file and on the wire, at their defaults and away from them.
#include <gtest/gtest.h>

#include "lparams/catalogue/catalogue.h"
#include "tests/catalogue/expected_groups.h"
#include "tests/support/param_forms.h"
#include "tests/support/readable_bytes.h"
#include "tests/support/recording_load_log.h"

namespace LPARAMS::Server {
namespace {

using namespace testing_support;

/// Loads a block as it is saved, head included, and expects no report.
void loadBlock(ParamGroup& group, const std::string& block) {
  ActiveLoadLog log;
  EXPECT_TRUE(loadText(group, block.substr(block.find('=') + 1)));
  EXPECT_EQ(log.reports, std::vector<std::string>{});
}

/// What a group at its defaults holds after it has read a record with every value changed.
const Forms& changedOnTheWire(const ExpectedParam& param) {
  return param.onWire ? param.changed : param.initial;
}

/// A group with a row of each class, one of them in the file only.
struct Sample : ParamGroup {
  Sample() : ParamGroup("SAMPLE") {}

  BoolParam FLAG{*this, Label("FLAG\0"), true};
  PortParam PORT{*this, Label("PORT\0"), {Default{500}, Range{1, 65535}}};
  UIntParam COUNT{*this, Label("COUNT\0"), {Default{10}, Range{5, 4294967295}}, FileOnly};
  UIntParam SIZE{*this, Label("SIZE\0"), {Default{258}, Range{0, 600}}};
  EnumParam LEVEL{*this, Label("LEVEL\0"), {LL_DETAILS, LOG_LEVEL_VARIANTS}};
  StStParam LINE{*this, Label("LINE\0"), "two words"};
  QcdSParam SECRET{*this, Label("SECRET\0"), ""};
};

// Pins what the classes write, and what the tests' own builder makes of its rows.
TEST(Encodings, ABlockAndARecordLetterByLetter) {
  const ExpectedGroup expected = {
      "SAMPLE",
      nullptr,
      {{Kind::Bool, "FLAG", {"1", "01"}, {}},
       {Kind::Port, "PORT", {"500", "F4 01"}, {}},
       {Kind::UInt, "COUNT", {"10", ""}, {}, 5, 4294967295, nullptr, false},
       {Kind::UInt, "SIZE", {"258", "02 01 00 00"}, {}},
       {Kind::Enum, "LEVEL", {"_LL_DETAILS", "02 00 00 00"}, {}},
       {Kind::Line, "LINE", {"two words", "09 00 00 00 74 77 6F 20 77 6F 72 64 73"}, {}},
       {Kind::Secret, "SECRET", {"", "00 00 00 00"}, {}}}};
  const std::string text =
      "    /SAMPLE=\n"
      "        FLAG=1\n"
      "        PORT=500\n"
      "        COUNT=10\n"
      "        SIZE=258\n"
      "        LEVEL=_LL_DETAILS\n"
      "        LINE=two words\n"
      "        SECRET=\n"
      "    end=\n";
  const std::string record =
      "01 F4 01 02 01 00 00 02 00 00 00 09 00 00 00 74 77 6F 20 77 6F 72 64 73 00 00 00 00";
  Sample sample;
  EXPECT_EQ(savedText(sample, 1), text);
  EXPECT_EQ(expected.text(1, initially), text);
  EXPECT_EQ(hex(wireBytes(sample)), record);
  EXPECT_EQ(hex(expected.record(initially)), record);
  EXPECT_EQ(expected.shown("S", initially),
            "S.FLAG=1\nS.PORT=500\nS.SIZE=258\nS.LEVEL=_LL_DETAILS\nS.LINE=two words\n"
            "S.SECRET=\n");
}

TEST(Encodings, EveryGroupAtItsDefaults) {
  forEachGroup([](const ExpectedGroup& expected, ParamGroup& group) {
    EXPECT_EQ(hex(wireBytes(group)), hex(expected.record(initially)));
    EXPECT_EQ(savedText(group), expected.text(0, initially));
    EXPECT_EQ(savedText(group, 2), expected.text(2, initially));
  });
}

TEST(Encodings, EveryGroupLoadsEveryValueFromItsBlock) {
  forEachGroup([](const ExpectedGroup& expected, ParamGroup& group) {
    loadBlock(group, expected.text(1, whenChanged));
    EXPECT_EQ(savedText(group), expected.text(0, whenChanged));
    EXPECT_EQ(hex(wireBytes(group)), hex(expected.record(whenChanged)));

    loadBlock(group, expected.text(0, initially));
    EXPECT_EQ(savedText(group), expected.text(0, initially));
  });
}

TEST(Encodings, EveryGroupReadsEveryValueOfItsRecordAndNoFileOnlyOne) {
  forEachGroup([](const ExpectedGroup& expected, ParamGroup& group) {
    const std::string record = expected.record(whenChanged);
    const ReadResult read = readBytes(group, record);
    EXPECT_TRUE(read.result);
    EXPECT_EQ(read.position, record.size());
    EXPECT_EQ(savedText(group), expected.text(0, changedOnTheWire));
    EXPECT_EQ(hex(wireBytes(group)), hex(record));
  });
}

TEST(Encodings, AReadLeavesChangedFileOnlyValuesAlone) {
  forEachGroup([](const ExpectedGroup& expected, ParamGroup& group) {
    loadBlock(group, expected.text(0, whenChanged));
    EXPECT_TRUE(readBytes(group, expected.record(initially)).result);
    EXPECT_EQ(savedText(group), expected.text(0, [](const ExpectedParam& param) -> const Forms& {
      return param.onWire ? param.initial : param.changed;
    }));
  });
}

TEST(Encodings, BytesBehindTheRecordAreNotRead) {
  forEachGroup([](const ExpectedGroup& expected, ParamGroup& group) {
    const std::string record = expected.record(whenChanged);
    const ReadResult read = readBytes(group, record + "more");
    EXPECT_TRUE(read.result);
    EXPECT_EQ(read.position, record.size());
  });
}

TEST(Encodings, EveryStrictPrefixOfARecordThrowsAndChangesTheMembersReadSoFar) {
  for (const ExpectedGroup& expected : expectedGroups()) {
    const std::string record = expected.record(whenChanged);
    for (size_t length = 0; length < record.size(); ++length) {
      SCOPED_TRACE(std::string(expected.name) + ", " + std::to_string(length) + " bytes");
      const auto group = expected.make();
      EXPECT_EQ(readBytes(*group, record.substr(0, length)).thrown, "CommandStreamError");

      size_t end = 0;  // of the member's bytes in the record
      const auto readSoFar = [&](const ExpectedParam& param) -> const Forms& {
        if (!param.onWire) return param.initial;
        end += unhex(param.changed.bytes).size();
        return end <= length ? param.changed : param.initial;
      };
      EXPECT_EQ(savedText(*group), expected.text(0, readSoFar));
    }
  }
}

TEST(Encodings, SavingLoadingAndSavingAgainGivesTheSameText) {
  forEachGroup([](const ExpectedGroup& expected, ParamGroup& group) {
    for (const auto choose : {initially, whenChanged}) {
      loadBlock(group, expected.text(0, choose));
      const std::string saved = savedText(group);
      const auto other = expected.make();
      loadBlock(*other, saved);
      EXPECT_EQ(savedText(*other), saved);
    }
  });
}

TEST(Encodings, LinesInAnyOrderLoadTheSameValues) {
  forEachGroup([](const ExpectedGroup& expected, ParamGroup& group) {
    std::string reversed = "end=\n";
    for (const ExpectedParam& param : expected.params) {
      reversed = param.name + ("=" + param.changed.text) + "\n" + reversed;
    }
    loadBlock(group, "/=\n" + reversed);
    EXPECT_EQ(savedText(group), expected.text(0, whenChanged));
  });
}

TEST(Encodings, AnEmptyBlockReportsEveryMemberMissingAndKeepsEveryValue) {
  forEachGroup([](const ExpectedGroup& expected, ParamGroup& group) {
    ActiveLoadLog log;
    EXPECT_TRUE(loadText(group, "\nend=\n"));
    const std::string count = std::to_string(expected.params.size());
    EXPECT_EQ(log.reports, std::vector<std::string>{"paramsMissing(" + count + ", " + count + ", " +
                                                    expected.name + ")"});
    EXPECT_EQ(savedText(group), expected.text(0, initially));
  });
}

}  // namespace
}  // namespace LPARAMS::Server
