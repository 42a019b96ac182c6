#include "inspection/settings_completeness.h"

#include <gtest/gtest.h>

#include <locale>
#include <vector>

#include "tests/agent/state/scratch_directory.h"
#include "tests/support/readable_bytes.h"

namespace inspection {
namespace {

using namespace std::string_literals;

const std::string SMALLEST = "/ROOT=\nend=\n";

TEST(SettingsCompleteness, WholeFiles) {
  const std::string rows[] = {
      SMALLEST,
      agent_testing::exampleSettings(),
      "\xEF\xBB\xBF" + SMALLEST,
      "/ROOT=\nend=",           // the last line end may be missing
      "/ROOT=\nend=\n \t\n\n",  // white space may follow
      "/ROOT=\r\n    A=1\r\nend=\r\n",
      "/ROOT=\n/A=\n/B=\nend=\nend=\n/C=\nend=\nend=\n",
      // Known groups and users need no slash, in their places only.
      "/ROOT=\nADMIN=\nend=\nend=\n",
      "/ROOT=\nUSERS=\n\x0fUSER=\nNAME=a\nend=\nend=\nend=\n",
      "/ROOT=\n/A=\nADMIN=\nend=\nUSER=\nend=\n",
      "/ROOT=\nVALUE=end=/A=\nend=\n",  // a value ends with its line, whatever it holds
      "/ROOT=\nVALUE=\nend=\n",
      "/ROOT=end=\n",                 // no line end is needed behind the head of a block
      "/ROOT===A=1\n==end=\n",        // marks without a key are passed over
      "/ROOT=\nKEY\nMORE=1\nend=\n",  // a key goes on over line ends
      "/ROOT=\n\x01\x02 end=\n",
      "/ROOT=\n/A=\n/end=\n/end=\n",  // a slash before the end of a block changes nothing
      "/ROOT=\n/IKE=\n/IKE_PORT=1\nend=\nend=\n",  // nor one before a value
      // A number that is missing is looked for in the next lines.
      "/ROOT=\n/IKE=\nIKE_PORT=\n\n 1\nend=\nend=\n",
      "/ROOT=\n/IKE=\nIKE_PORT=\n/LOST=\nend=\nend=\n",
      "/ROOT=\n/IKE=\nQCD_SECRET=\nend=\nend=\n",
  };
  for (const std::string& text : rows) {
    EXPECT_EQ(incompleteBecause(text), "") << testing_support::inQuotes(text);
  }
}

TEST(SettingsCompleteness, TellsWhere) {
  EXPECT_EQ(incompleteness("").offset, 0u);
  EXPECT_EQ(incompleteness("\n" + SMALLEST).offset, 0u);
  EXPECT_EQ(incompleteness("/ROOT=\nA=\0\nend=\n"s).offset, 9u);
  EXPECT_EQ(incompleteness("/ROOT=\n/A=\n").offset, 11u);
  EXPECT_EQ(incompleteness("\xEF\xBB\xBF" + SMALLEST + "\n x").offset, 3 + SMALLEST.size() + 2);
  const std::string tooLarge(MAX_SETTINGS_SIZE + 1, ' ');
  EXPECT_EQ(incompleteness(tooLarge).offset, MAX_SETTINGS_SIZE);
}

TEST(SettingsCompleteness, TellsWhatIsMissing) {
  const struct {
    std::string text;
    const char* reason;
  } rows[] = {
      {"", "it is empty"},
      {"\xEF\xBB\xBF", "it does not begin with /ROOT="},
      {"\n" + SMALLEST, "it does not begin with /ROOT="},
      {"ROOT=\nend=\n", "it does not begin with /ROOT="},
      {"/root=\nend=\n", "it does not begin with /ROOT="},
      {"/ROOTS=\nend=\n", "it does not begin with /ROOT="},
      {"\xEF\xBB\xBF\xEF\xBB\xBF" + SMALLEST, "it does not begin with /ROOT="},
      {"/ROOT=", "1 of its blocks are not closed"},
      {"/ROOT=\nADMIN=\nend=\n", "1 of its blocks are not closed"},
      {"/ROOT=\nUSERS=\nUSER=\nend=\n", "2 of its blocks are not closed"},
      {"/ROOT=\nend", "1 of its blocks are not closed"},
      {"/ROOT=\nEND=\n", "1 of its blocks are not closed"},
      {"/ROOT=\nend =\n", "1 of its blocks are not closed"},
      {"\xEF\xBB\xBF/ROOT=\n/IKE=\nIKE_PORT=\n", "2 of its blocks are not closed"},
      {"/ROOT=\n/IKE=\nIKE_PORT=\nend=\nend=\n", "1 of its blocks are not closed"},
      {"/ROOT=\n/IKE=\nDPD_ENABLED=\r\n\vend=\nend=\n", "1 of its blocks are not closed"},
      {"/ROOT=\n/USERS=\n/USER=\nPMP_TIMEOUT=\nend=\nend=\nend=\n",
       "1 of its blocks are not closed"},
      {"/ROOT=\n/IKE=\nIKE_PORT=\n/LOST=\nend=\nend=\nend=\n",
       "text follows the end of its root block"},
      {"/ROOT=\n/A=\n/B=\nend=\n", "2 of its blocks are not closed"},
      {"/ROOT=\n/A=\nV=1", "2 of its blocks are not closed"},
      {SMALLEST + "end=\n", "text follows the end of its root block"},
      {SMALLEST + SMALLEST, "text follows the end of its root block"},
      {SMALLEST + "\0"s, "it holds a zero byte"},
      {"/ROOT=\nA=\0\nend=\n"s, "it holds a zero byte"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(incompleteBecause(row.text), row.reason) << testing_support::inQuotes(row.text);
  }
}

/// A locale in which "x" is white space.
std::locale withAnotherSpace() {
  static std::vector<std::ctype_base::mask> table(std::ctype<char>::classic_table(),
                                                  std::ctype<char>::classic_table() + 256);
  table['x'] |= std::ctype_base::space;
  return {std::locale::classic(), new std::ctype<char>(table.data())};
}

TEST(SettingsCompleteness, IsTheSameInEveryLocale) {
  const std::string missing = "/ROOT=\n/IKE=\nIKE_PORT=\nx\n1\nend=\nend=\n";
  const std::string reason = incompleteBecause(missing);
  const std::locale before = std::locale::global(withAnotherSpace());
  EXPECT_EQ(incompleteBecause(missing), reason);
  std::locale::global(before);
  EXPECT_EQ(reason, "1 of its blocks are not closed");
}

TEST(SettingsCompleteness, EveryCutIsSeen) {
  const std::string whole = agent_testing::exampleSettings();
  const size_t lastByteThatCounts = whole.size() - 1;  // the line end may be missing
  for (size_t length = 0; length < lastByteThatCounts; ++length) {
    ASSERT_NE(incompleteBecause(whole.substr(0, length)), "") << length;
  }
}

TEST(SettingsCompleteness, Limit) {
  const std::string filler(MAX_SETTINGS_SIZE - SMALLEST.size(), '\n');
  EXPECT_EQ(incompleteBecause(SMALLEST + filler), "");
  EXPECT_EQ(incompleteBecause(SMALLEST + filler + "\n"), "it is larger than 16 MiB");
}

}  // namespace
}  // namespace inspection
