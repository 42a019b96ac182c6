// Blocks that no member of a group answers to: skipped as a whole, and reported key by key.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lparams/params/numeric_param.h"
#include "lparams/params/param_group.h"
#include "tests/params/load_rows.h"
#include "tests/support/param_forms.h"

namespace LPARAMS::Server {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;

class UnknownBlockTest : public testing::Test {
 protected:
  /// Loads a block of the group behind its head's "=".
  bool load(const std::string& block) { return loadText(group, block); }

  ParamGroup group{"G"};
  UIntParam number{group, "NUM", Default{1}, Range{0, 100}};
  ActiveLoadLog log;
};

TEST_F(UnknownBlockTest, IsSkippedUpToItsEndWithAReportForEveryKeyInIt) {
  EXPECT_TRUE(load("\n/FOO=\n    A=1\n    NUM=7\nend=\nNUM=5\nend=\n"));
  EXPECT_EQ(number.value, 5u);
  EXPECT_THAT(log.reports, ElementsAre("unknownParam(\"FOO\", G)", "unknownParam(\"A\", FOO)",
                                       "unknownParam(\"NUM\", FOO)"));
}

TEST_F(UnknownBlockTest, ItsInnerBlocksAreSkippedWithIt) {
  EXPECT_TRUE(load(
      "\n/FOO=\n/BAR=\nA=1\n/BAZ=\nend=\nB=2\nend=\nC=3\n/G=\nNUM=7\nend=\nend=\nNUM=5\nend=\n"));
  EXPECT_EQ(number.value, 5u);
  EXPECT_THAT(log.reports, ElementsAre("unknownParam(\"FOO\", G)", "unknownParam(\"BAR\", FOO)",
                                       "unknownParam(\"A\", BAR)", "unknownParam(\"BAZ\", BAR)",
                                       "unknownParam(\"B\", BAR)", "unknownParam(\"C\", FOO)",
                                       "unknownParam(\"G\", FOO)", "unknownParam(\"NUM\", G)"));
}

TEST_F(UnknownBlockTest, AnEmptyOneIsReportedByItsHeadAlone) {
  EXPECT_TRUE(load("\n/FOO=\nend=\nNUM=5\nend=\n"));
  EXPECT_EQ(number.value, 5u);
  EXPECT_THAT(log.reports, ElementsAre("unknownParam(\"FOO\", G)"));
}

TEST_F(UnknownBlockTest, TheTextBehindItsHeadBelongsToItsFirstKey) {
  EXPECT_TRUE(load("\n/FOO=junk\nA=1\n/BAR=more\nB=2\nend=\nend=\nNUM=5\nend=\n"));
  EXPECT_EQ(number.value, 5u);
  EXPECT_THAT(log.reports,
              ElementsAre("unknownParam(\"FOO\", G)", "unknownParam(\"junk\\nA\", FOO)",
                          "unknownParam(\"BAR\", FOO)", "unknownParam(\"more\\nB\", BAR)"));
}

TEST_F(UnknownBlockTest, TheFirstSlashAloneIsNotPartOfTheName) {
  EXPECT_TRUE(load("\n//NUM=\nA=1\nend=\n/ NUM=\nend=\n/=\nB=1\nend=\nNUM=5\nend=\n"));
  EXPECT_EQ(number.value, 5u);
  EXPECT_THAT(log.reports, ElementsAre("unknownParam(\"/NUM\", G)", "unknownParam(\"A\", /NUM)",
                                       "unknownParam(\" NUM\", G)", "unknownParam(\"\", G)",
                                       "unknownParam(\"B\", )"));
}

TEST_F(UnknownBlockTest, WithoutAnEndItTakesTheRestOfTheInput) {
  EXPECT_FALSE(load("\n/FOO=\nA=1\nNUM=5\nend=\n"));
  EXPECT_EQ(number.value, 1u);
  EXPECT_THAT(log.reports, ElementsAre("unknownParam(\"FOO\", G)", "unknownParam(\"A\", FOO)",
                                       "unknownParam(\"NUM\", FOO)"));
}

TEST_F(UnknownBlockTest, OddKeysInItAreReadLikeAnyOther) {
  EXPECT_TRUE(load("\n/FOO=\n =x\njunk\nA=1\n==B=2\nend=\r\nNUM=5\nend=\n"));
  EXPECT_EQ(number.value, 5u);
  EXPECT_THAT(log.reports,
              ElementsAre("unknownParam(\"FOO\", G)", "unknownParam(\"\", FOO)",
                          "unknownParam(\"junk\\nA\", FOO)", "unknownParam(\"B\", FOO)"));
}

TEST_F(UnknownBlockTest, ItsEndMayLackTheEqualsSignAtTheEndOfTheInput) {
  EXPECT_FALSE(load("\nNUM=5\n/FOO=\nA=1\nend"));
  EXPECT_EQ(number.value, 5u);
  EXPECT_THAT(log.reports, ElementsAre("unknownParam(\"FOO\", G)", "unknownParam(\"A\", FOO)"));
}

/// `depth` unknown blocks, each in the one before, a key in the innermost.
std::string nestedBlocks(size_t depth) {
  std::string block;
  for (size_t i = 0; i < depth; ++i) block += "\n/FOO=";
  block += "\nA=1\n";
  for (size_t i = 0; i < depth; ++i) block += "end=\n";
  return block + "NUM=5\nend=\n";
}

TEST_F(UnknownBlockTest, DepthCostsNoStackAndChangesNoReport) {
  for (const size_t depth : {1u, 3u, 200'000u}) {
    SCOPED_TRACE(depth);
    log.reports.clear();
    number.value = 1;
    EXPECT_TRUE(load(nestedBlocks(depth)));
    EXPECT_EQ(number.value, 5u);

    std::vector<std::string> expected(depth, "unknownParam(\"FOO\", FOO)");
    expected.front() = "unknownParam(\"FOO\", G)";
    expected.emplace_back("unknownParam(\"A\", FOO)");
    EXPECT_TRUE(log.reports == expected) << log.reports.size() << " reports";
  }
}

TEST_F(UnknownBlockTest, AHundredThousandHeadsWithoutAnEndCostNoStackEither) {
  std::string block;
  for (int i = 0; i < 100'000; ++i) block += "\n/FOO=";
  EXPECT_FALSE(load(block));
  EXPECT_EQ(log.reports.size(), 100'000u);
}

}  // namespace
}  // namespace LPARAMS::Server
