// How a group reads its block: keys, end lines, what is reported and what is not.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lparams/params/line_string_param.h"
#include "lparams/params/numeric_param.h"
#include "lparams/params/param_group.h"
#include "tests/params/load_rows.h"
#include "tests/support/param_forms.h"

namespace LPARAMS::Server {
namespace {

using namespace testing_support;
using namespace std::string_literals;
using Reports = std::vector<std::string>;

/// The group of these tests: a number and a text.
struct Pair : ParamGroup {
  Pair() : ParamGroup("G") {}
  UIntParam number{*this, "NUM", Default{1}, Range{0, 100}};
  StStParam text{*this, "TEXT", "old"};
};

/// A block behind its head's "=", and what loading it leaves.
struct BlockRow {
  std::string block;
  bool result;
  unsigned number;
  std::string text;
  Reports reports = {};
  std::string unread = {};
};

void checkBlocks(const std::vector<BlockRow>& rows) {
  for (const BlockRow& row : rows) {
    SCOPED_TRACE("loading " + inQuotes(row.block));
    ActiveLoadLog log;
    Pair group;
    std::istringstream is(row.block);
    EXPECT_EQ(group.load(is), row.result);
    EXPECT_EQ(group.number.value, row.number);
    EXPECT_EQ(group.text.value, row.text);
    EXPECT_EQ(log.reports, row.reports);
    EXPECT_EQ(unreadText(is), row.unread);
  }
}

const std::string MISSING_1 = "paramsMissing(1, 2, G)";
const std::string MISSING_2 = "paramsMissing(2, 2, G)";

TEST(GroupLoad, ABlockThatListsEveryMemberOnceIsReadWithoutAReport) {
  checkBlocks({
      {"\n    NUM=5\n    TEXT=new\nend=\nnext", true, 5, "new", {}, "next"},
      {"\nTEXT=new\nNUM=5\nend=\n", true, 5, "new"},
      {"NUM=5\nTEXT=new\nend=\n", true, 5, "new"},
      {"\n\n\t NUM=5\n\n\nTEXT=new\n \n  end=\n", true, 5, "new"},
  });
}

TEST(GroupLoad, MissingMembersKeepTheirValuesAndAreCounted) {
  checkBlocks({
      {"\nend=\nnext", true, 1, "old", {MISSING_2}, "next"},
      {"end=\n", true, 1, "old", {MISSING_2}},
      {"\nNUM=5\nend=\n", true, 5, "old", {MISSING_1}},
  });
}

TEST(GroupLoad, TwoMissingOfFiveAreReportedWithBothNumbers) {
  ParamGroup five("FIVE");
  StStParam a(five, "A", ""), b(five, "B", ""), c(five, "C", ""), d(five, "D", ""),
      e(five, "E", "");
  ActiveLoadLog log;
  EXPECT_TRUE(loadText(five, "\nE=5\nA=1\nC=3\nend=\n"));
  EXPECT_EQ(log.reports, Reports{"paramsMissing(2, 5, FIVE)"});
}

// Kept: loads are counted, not members.
TEST(GroupLoad, AKeyThatOccursTwiceCountsTwice) {
  checkBlocks({
      {"\nNUM=5\nNUM=6\nend=\n", true, 6, "old"},
      {"\nNUM=5\nNUM=6\nNUM=7\nend=\n", true, 7, "old"},
      {"\nNUM=5\nNUM=6\nTEXT=new\nend=\n", true, 6, "new"},
  });
}

TEST(GroupLoad, AMemberWithABadValueCountsAsLoaded) {
  checkBlocks({{"\nNUM=abc\nTEXT=new\nend=\n", true, 1, "new", {"badValue(NUM, \"abc\")"}}});
}

TEST(GroupLoad, AnUnknownKeyIsReportedAndItsLineDropped) {
  checkBlocks({
      {"\nFOO=1=2/end=\nNUM=5\nTEXT=new\nend=\n", true, 5, "new", {"unknownParam(\"FOO\", G)"}},
      {"\nFOO=\nNUM=5\nTEXT=new\nend=\n", true, 5, "new", {"unknownParam(\"FOO\", G)"}},
      {"\nnum=5\nend=\n", true, 1, "old", {"unknownParam(\"num\", G)", MISSING_2}},
      {"\nNUM\0=5\nend=\n"s, true, 1, "old", {"unknownParam(\"NUM\\x00\", G)", MISSING_2}},
  });
}

TEST(GroupLoad, ABlankBeforeTheEqualsSignBelongsToTheKeyAndOneBehindItToTheValue) {
  checkBlocks({
      {"\nNUM =5\nTEXT=new\nend=\n", true, 1, "new", {"unknownParam(\"NUM \", G)", MISSING_1}},
      {"\nNUM= 5\nTEXT= new \nend=\n", true, 5, " new "},
      {"\nend =\n", false, 1, "old", {"unknownParam(\"end \", G)"}},
  });
}

TEST(GroupLoad, EverythingUpToTheBlankIsStrippedFromTheFrontOfAKey) {
  checkBlocks({
      {"\x01\x1F\x00\r\n\v NUM=5\nTEXT=new\nend=\n"s, true, 5, "new"},
      {"\n\x7F=5\nend=\n", true, 1, "old", {"unknownParam(\"\\x7F\", G)", MISSING_2}},
      {"\n\xA0NUM=5\nend=\n", true, 1, "old", {"unknownParam(\"\\xA0NUM\", G)", MISSING_2}},
      {"\n\xEF\xBB\xBFNUM=5\nend=\n",
       true,
       1,
       "old",
       {"unknownParam(\"\\xEF\\xBB\\xBFNUM\", G)", MISSING_2}},
  });
}

TEST(GroupLoad, AKeyOfBlanksOnlyIsReportedAsTheEmptyKey) {
  checkBlocks({
      {"\n=junk\nNUM=5\nTEXT=new\nend=\n", true, 5, "new", {"unknownParam(\"\", G)"}},
      {"\nNUM=5\n  =junk\nTEXT=new\nend=\n", true, 5, "new", {"unknownParam(\"\", G)"}},
  });
}

// The newline before it is consumed already, so nothing stands before the "=".
TEST(GroupLoad, AnEmptyKeyIsPassedOver) {
  checkBlocks({
      {"=NUM=5\nTEXT=new\nend=\n", true, 5, "new"},
      {"===NUM=5\nTEXT=new\nend=\n", true, 5, "new"},
      {"\nTEXT=new\n=junk\nNUM=5\nend=\n",
       true,
       1,
       "new",
       {"unknownParam(\"junk\\nNUM\", G)", MISSING_1}},
  });
}

TEST(GroupLoad, ALineWithoutAnEqualsSignMergesWithTheNextOne) {
  checkBlocks({
      {"\njunk\n    NUM=5\nTEXT=new\nend=\n",
       true,
       1,
       "new",
       {"unknownParam(\"junk\\n    NUM\", G)", MISSING_1}},
  });
}

TEST(GroupLoad, ASlashBeforeAKnownNameChangesNothing) {
  checkBlocks({
      {"\n/NUM=5\n  /TEXT=new\nend=\n", true, 5, "new"},
      {"\nNUM=5\nTEXT=new\n/end=\n", true, 5, "new"},
  });
}

TEST(GroupLoad, AGroupIsFoundWithoutItsSlash) {
  ParamGroup outer("OUTER");
  Pair inner;
  outer.add(inner);
  ActiveLoadLog log;
  EXPECT_TRUE(loadText(outer, "\nG=\nNUM=5\nTEXT=new\nend=\nend=\n"));
  EXPECT_EQ(inner.number.value, 5u);
  EXPECT_EQ(log.reports, Reports{});
}

TEST(GroupLoad, AnInnerGroupThatFailsIsReportedByTheOuterOne) {
  ParamGroup outer("OUTER");
  Pair inner;
  outer.add(inner);
  ActiveLoadLog log;
  EXPECT_FALSE(loadText(outer, "\n/G=\nNUM=5\n"));
  EXPECT_EQ(inner.number.value, 5u);
  EXPECT_EQ(log.reports, Reports{"paramFailed(\"G\", OUTER)"});
}

TEST(GroupLoad, OnlyEndInSmallLettersEndsTheBlock) {
  checkBlocks({
      {"\nEND=\nEnd=\nends=\nend=\n",
       true,
       1,
       "old",
       {"unknownParam(\"END\", G)", "unknownParam(\"End\", G)", "unknownParam(\"ends\", G)",
        MISSING_2}},
  });
}

TEST(GroupLoad, OneCharacterBehindTheEndIsSkipped) {
  checkBlocks({
      {"\nend=\r\nnext", true, 1, "old", {MISSING_2}, "\nnext"},
      {"\nend=junk\n", true, 1, "old", {MISSING_2}, "unk\n"},
      {"\nend=", true, 1, "old", {MISSING_2}},
  });
}

TEST(GroupLoad, CarriageReturnsStayWithValuesAndAreStrippedFromKeys) {
  checkBlocks({{"\r\n    NUM=5\r\n    TEXT=new\r\nend=\r\n",
                true,
                5,
                "new\r",
                {"extraText(NUM, \"\\r\")"},
                "\n"}});
}

TEST(GroupLoad, TheEndOfTheInputInsideTheBlockReturnsFalseWithoutCounting) {
  checkBlocks({
      {"", false, 1, "old"},
      {"\nNUM=5\n", false, 5, "old"},
      {"\nNUM=5\nTEXT=new\n", false, 5, "new"},
      {"===", false, 1, "old"},
  });
}

TEST(GroupLoad, TheLastLineNeedsNoNewline) {
  checkBlocks({
      {"\nTEXT=new\nNUM=5", false, 5, "new"},
      {"\nNUM=5\nTEXT=new", false, 5, "new"},
      {"\nNUM=5\nTEXT=", false, 5, ""},
      {"\nNUM=", false, 1, "old", {"badValue(NUM, \"\")"}},
  });
}

TEST(GroupLoad, AKeyCutOffAtTheEndOfTheInputIsLookedUpLikeAnyOther) {
  checkBlocks({
      {"\nNUM", false, 1, "old", {"badValue(NUM, \"\")"}},
      {"\nTEXT", false, 1, ""},
      {"\nTEX", false, 1, "old", {"unknownParam(\"TEX\", G)"}},
      {"\n/TEX", false, 1, "old", {"unknownParam(\"TEX\", G)"}},
      {"\nNUM=5\n   ", false, 5, "old", {"unknownParam(\"\", G)"}},
      {"\nNUM=5\nTEXT=new\nend", true, 5, "new"},
      {"\nNUM=5\n    end", true, 5, "old", {MISSING_1}},
      {"\nNUM=5\nen", false, 5, "old", {"unknownParam(\"en\", G)"}},
  });
}

/// Answers for one name with another member, and remembers what it was asked.
struct Redirecting : Pair {
  Param* getParam(const std::string& key) override {
    asked.push_back(key);
    return key == "NUM" ? &other : ParamGroup::getParam(key);
  }
  ParamGroup apart{"APART"};
  UIntParam other{apart, "OTHER", Default{7}, Range{0, 100}};
  Reports asked;
};

TEST(GroupLoad, EveryKeyGoesThroughAnOverriddenLookup) {
  ActiveLoadLog log;
  Redirecting group;
  EXPECT_TRUE(loadText(group, "\n    NUM=5\n    TEXT=new\nTEXT=newer\nFOO=1\nend=\n"));
  EXPECT_EQ(group.asked, (Reports{"NUM", "TEXT", "TEXT", "FOO"}));
  EXPECT_EQ(group.number.value, 1u);
  EXPECT_EQ(group.other.value, 5u);
  EXPECT_EQ(group.text.value, "newer");
  EXPECT_EQ(log.reports, Reports{"unknownParam(\"FOO\", G)"});
}

TEST(GroupLoad, AnOverriddenLookupTellsTheMemberInAnyOrderOfLinesAndSavingKeepsItsOwn) {
  struct Swapping : Pair {
    Param* getParam(const std::string& key) override {
      if (key == "NUM") return &text;
      return key == "TEXT" ? &number : nullptr;
    }
  };
  for (const char* block : {"\n    NUM=a b\n    TEXT=5\nend=\n", "\nTEXT=5\nNUM=a b\nend=\n",
                            "\nTEXT=4\nNUM=a b\nTEXT=5\nend=\n"}) {
    ActiveLoadLog log;
    Swapping group;
    EXPECT_TRUE(loadText(group, block));
    EXPECT_EQ(group.number.value, 5u) << block;
    EXPECT_EQ(group.text.value, "a b") << block;
    EXPECT_EQ(log.reports, Reports{}) << block;
    EXPECT_EQ(savedText(group), "/G=\n    NUM=5\n    TEXT=a b\nend=\n");
  }
}

TEST(GroupLoad, AMemberThatTheLookupHidesIsUnknown) {
  struct Hiding : Pair {
    Param* getParam(const std::string&) override { return nullptr; }
  } group;
  ActiveLoadLog log;
  EXPECT_TRUE(loadText(group, "\n    NUM=5\n    TEXT=new\nend=\n"));
  EXPECT_EQ(group.number.value, 1u);
  EXPECT_EQ(group.text.value, "old");
  EXPECT_EQ(log.reports,
            (Reports{"unknownParam(\"NUM\", G)", "unknownParam(\"TEXT\", G)", MISSING_2}));
}

TEST(GroupLoad, TheFirstOfTwoEqualNamesIsLoadedEveryTime) {
  ActiveLoadLog log;
  ParamGroup group("G");
  StStParam first(group, "SAME", ""), second(group, "SAME", "untouched");
  EXPECT_TRUE(loadText(group, "\n    SAME=a\n    SAME=b\nend=\n"));
  EXPECT_EQ(first.value, "b");
  EXPECT_EQ(second.value, "untouched");
  EXPECT_EQ(log.reports, Reports{});
}

TEST(GroupLoad, TheEndClosesTheBlockWhateverItsMembersAreCalled) {
  ActiveLoadLog log;
  ParamGroup group("G");
  StStParam end(group, "end", "untouched");
  std::istringstream is("\n    end=\n    end=more\n");
  EXPECT_TRUE(group.load(is));
  EXPECT_EQ(end.value, "untouched");
  EXPECT_EQ(log.reports, Reports{"paramsMissing(1, 1, G)"});
  EXPECT_EQ(unreadText(is), "    end=more\n");
}

TEST(GroupLoad, ANameIsComparedToItsEndAndAKeyToIts) {
  ActiveLoadLog log;
  ParamGroup group("G");
  StStParam empty(group, "", "untouched"), longer(group, "NAMES", "untouched"),
      name(group, "NAME", ""), part(group, "NAM", "untouched");
  EXPECT_TRUE(loadText(group, "\n    NAME=a\n    NAME\0S=b\n    N=c\nend=\n"s));
  EXPECT_EQ(name.value, "a");
  for (const StStParam* other : {&empty, &longer, &part}) EXPECT_EQ(other->value, "untouched");
  EXPECT_EQ(log.reports, (Reports{"unknownParam(\"NAME\\x00S\", G)", "unknownParam(\"N\", G)",
                                  "paramsMissing(3, 4, G)"}));
  EXPECT_TRUE(loadText(group, "\n    =d\nend=\n"));
  EXPECT_EQ(empty.value, "d");
}

TEST(GroupLoad, WithoutALoadLogReportsAreDroppedAndTheBlockIsReadAllTheSame) {
  ASSERT_EQ(g_loadlog, nullptr);
  Pair group;
  EXPECT_TRUE(loadText(group, "\nFOO=1\n/BAR=\nX=1\nend=\nNUM=5 x\nend=\n"));
  EXPECT_EQ(group.number.value, 5u);
}

}  // namespace
}  // namespace LPARAMS::Server
