// What is said of settings files, and how bad it is.
#include <gmock/gmock.h>

#include <sstream>
#include <string>
#include <vector>

#include "checking/check.h"
#include "inspection/settings_completeness.h"
#include "tests/agent/state/scratch_directory.h"
#include "tests/checking/checked_lines.h"

namespace checking {
namespace {

using checking_testing::linesOf;
using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

std::string edited(const std::string& from, const std::string& to) {
  std::string text = agent_testing::exampleSettings();
  return text.replace(text.find(from), from.size(), to);
}

TEST(SettingsCheck, OfAFileAsItIsSavedSaysNothing) {
  EXPECT_THAT(linesOf(agent_testing::exampleSettings()), IsEmpty());
  EXPECT_THAT(linesOf("\xEF\xBB\xBF" + agent_testing::exampleSettings()), IsEmpty());
}

TEST(SettingsCheck, SaysWhatALoadWouldDo) {
  const std::string long_(65'537, 'x');
  const struct {
    std::string from;
    std::string to;
    std::vector<std::string> lines;
  } rows[] = {
      {"IKE_PORT=500",
       "IKE_PORT=70000",
       {R"(5:18: error: IKE.IKE_PORT: "70000" is not a number from 1 to 65535; the load would keep 500)"}},
      {"IKE_PORT=500",
       "IKE_PORT=-1",
       {R"(5:18: warning: IKE.IKE_PORT: "-1" is not a number from 1 to 65535; the load would take 65535)"}},
      {"EXCHANGE_TIMEOUT=90",
       "EXCHANGE_TIMEOUT=2",
       {"7:26: warning: IKE.EXCHANGE_TIMEOUT: 2 is below 5; the load would take 5"}},
      {"EXCHANGE_TIMEOUT=90",
       "EXCHANGE_TIMEOUT=0",
       {"7:26: warning: IKE.EXCHANGE_TIMEOUT: 0 is below 5; the load would take 5"}},
      {"EXCHANGE_TIMEOUT=90",
       "EXCHANGE_TIMEOUT=700",
       {"7:26: warning: IKE.EXCHANGE_TIMEOUT: 700 is above 600; the load would take 600"}},
      {"EXCHANGE_TIMEOUT=90",
       "EXCHANGE_TIMEOUT=90 seconds",
       {R"(7:26: error: IKE.EXCHANGE_TIMEOUT: "90 seconds" is not a number from 5 to 600; the load would take 90)"}},
      {"IKE1_FRAGM_ENABLED=1",
       "IKE1_FRAGM_ENABLED=yes",
       {R"(15:28: error: IKE.IKE1_FRAGM_ENABLED: "yes" is not 0 or 1; the load would keep 1)"}},
      {"LANGUAGE=LOG_LANG_ENG",
       "LANGUAGE=LOG_LANG_EN\x1b",
       {R"(47:18: error: LOG.LANGUAGE: "LOG_LANG_EN\x1b" is not one of LOG_LANG_ENG, LOG_LANG_RUS; )"
        "the load would take LOG_LANG_ENG; did you mean LOG_LANG_ENG?"}},
      {"LOG_LEVEL=_LL_DETAILS",
       "LOG_LEVEL=_LL_EVENTS|_LL_DETAILS",
       {R"(38:19: warning: LOG.LOG_LEVEL: "_LL_EVENTS|_LL_DETAILS" is more than one name; )"
        "the load would take _LL_EVENTS"}},
      {"        IKE_PORT=500\n",
       "        IKE_PORT=500\n        IKE_PROT=500\n",
       {"6:9: error: IKE.IKE_PROT: no such parameter or block; the load would ignore it; did you "
        "mean IKE_PORT?"}},
      {"        IKE_PORT=500\n",
       "        IKE_PORT=500\n        IKE_PORT=501\n",
       {"6:9: warning: IKE.IKE_PORT: a second time (first in line 5); the later one counts"}},
      {"        IKE_PORT=500\n",
       "",
       {"2:6: warning: IKE: the file lacks IKE_PORT; the load would keep the default"}},
      {"        IKE_PORT=500\n",
       "        # the port\n        IKE_PORT=500\n",
       {"2:6: warning: IKE: the file lacks IKE_PORT; the load would keep the default",
        "5:9: error: no \"=\"; this line and the next are read as one name",
        "6:9: error: IKE.IKE_PORT: this line is read as a part of line 5"}},
      {"        IKE_PORT=500\n",
       "        # the\n\n  port\n        IKE_PORT=500\n",
       {"2:6: warning: IKE: the file lacks IKE_PORT; the load would keep the default",
        "5:9: error: no \"=\"; this line and the next 3 are read as one name",
        "8:9: error: IKE.IKE_PORT: this line is read as a part of line 5"}},
      {"IKE_PORT=500",
       "IKE_PORT=",
       {"2:6: warning: IKE: the file lacks NATT_PORT; the load would keep the default",
        R"(5:18: error: IKE.IKE_PORT: "" is not a number from 1 to 65535; the load would keep 500)",
        "6:9: error: IKE.NATT_PORT: this line is read as a part of line 5"}},
      {"    end=\n    /LOG=",
       "    end=x    /LOG=",
       {"36:9: error: IKE: the character behind \"end=\" is lost; the line should end there"}},
      {"PSK_NAME=\n",
       "PSK_NAME=a\tb\n",
       {R"(80:18: warning: POLICY.PSK_NAME: "a\x09b" holds control characters, which no write may add)"}},
      {"QCD_SECRET=example secret, change it",
       "QCD_SECRET=a\tb",
       {"19:20: warning: IKE.QCD_SECRET: the text holds control characters, which no write may "
        "add"}},
      {"QCD_SECRET=example secret, change it",
       "QCD_SECRET=" + long_,
       {"19:20: warning: IKE.QCD_SECRET: the text is longer than a write may make it (at most "
        "65536 "
        "bytes)"}},
      {"NAME=bob", "NAME=alice", {R"(105:13: warning: a second user "alice" (first in line 91))"}},
      {"NAME=bob", "NAME=", {"105:13: warning: USERS[1]: the user has no name"}},
  };
  for (const auto& row : rows) {
    EXPECT_THAT(linesOf(edited(row.from, row.to)), ElementsAreArray(row.lines)) << row.to;
  }
}

TEST(SettingsCheck, OfManyUsersNamesTheFirstThatIsTooMany) {
  std::string text = agent_testing::exampleSettings();
  const size_t end = text.rfind("    end=\nend=");
  std::string users;
  for (int i = 0; i < 4095; ++i) {
    users += "        /USER=\n            NAME=u" + std::to_string(i) + "\n        end=\n";
  }
  text.insert(end, users);
  EXPECT_THAT(linesOf(text), Contains(HasSubstr("warning: USERS[u4094]: more users than a write "
                                                "may leave (at most 4096)")));
}

TEST(SettingsCheck, OfAFileThatLacksGroupsSaysThatAnAgentWouldNotSave) {
  EXPECT_THAT(linesOf("/ROOT=\nend=\n"),
              ElementsAre("1:1: error: the file lacks IKE, LOG, UPDATE, POLICY, ADMIN, USERS; an "
                          "agent would serve the defaults, and refuse to save them"));
}

// What a load takes is usable, even where a start would refuse it.
TEST(SettingsCheck, TellsWhetherALoadWouldBreakOff) {
  const struct {
    std::string text;
    bool usable;
    const char* line;
  } rows[] = {
      {"", false, "1:1: error: no start would take the file: it is empty"},
      {"==", false, "1:1: error: no start would take the file: it does not begin with /ROOT="},
      {"TREE=\n", false,
       "1:1: error: the file begins with \"TREE\", not with \"/ROOT=\"; the load would take "
       "nothing"},
      {"/TREE=\nend=\n", false,
       "1:1: error: no start would take the file: it does not begin with /ROOT="},
      {"# mine\n/ROOT=\nend=\n", false,
       "1:1: error: no start would take the file: it does not begin with /ROOT="},
      {"/ROOT=\n    /IKE=\n    end=\n", false,
       "4:1: error: no start would take the file: 1 of its blocks are not closed"},
      {"/ROOT=\n    /IKE=\n", false,
       "2:6: error: IKE: the block is not closed before the end of the file"},
      {"/ROOT=\n    /IKE=\n", false, " error: the load would not come to the end of the file"},
      {"/ROOT=\n    /IKE=\n", false, "3:1: error: no name; the load would ignore what stands here"},
      {"ROOT=\nend=\n", true,
       "1:1: error: no start would take the file: it does not begin with /ROOT="},
      {"/ROOT=\nend=\n\nmore\n", true,
       "4:1: error: no start would take the file: text follows the end of its root block"},
      {std::string("/ROOT=\nend=\n\0", 13), true,
       "3:1: error: no start would take the file: it holds a zero byte"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(check(row.text).usable, row.usable) << row.text;
    EXPECT_THAT(linesOf(row.text), Contains(row.line)) << row.text;
  }
}

TEST(SettingsCheck, SaysMoreThanAHundredThings) {
  std::string lines;
  for (int i = 0; i < 1000; ++i) lines += "FOO=1\n";
  EXPECT_EQ(check(edited("        IKE_PORT", lines + "        IKE_PORT")).remarks.size(), 1000u);
}

TEST(SettingsCheck, OfAHostileFileIsBounded) {
  std::string text = "/ROOT=\n";
  for (int i = 0; i < 107; ++i) text += "A=\n";
  const Checked checked = check(text + "end=\n", 100);
  EXPECT_EQ(checked.remarks.size(), 100u);
  EXPECT_EQ(checked.leftOut, 8u);  // the groups are missing too
}

TEST(SettingsCheck, ListsAHundredThousandThings) {
  std::string lines;
  for (int i = 0; i < 100'007; ++i) lines += "FOO=1\n";
  const Checked checked = check(edited("        IKE_PORT", lines + "        IKE_PORT"));
  EXPECT_EQ(checked.remarks.size(), 100'000u);
  EXPECT_EQ(checked.leftOut, 7u);
}

TEST(SettingsCheck, WarnsOfASizeThatNoWriteMayReach) {
  constexpr size_t LARGEST = 8 * 1024 * 1024;
  std::string text = agent_testing::exampleSettings();
  text.insert(text.rfind("end="), LARGEST - text.size(), '\n');
  EXPECT_THAT(linesOf(text), IsEmpty());
  text.insert(text.rfind("end="), 1, '\n');
  EXPECT_THAT(linesOf(text), ElementsAre(" warning: the file has 8388609 bytes; a write may make "
                                         "it at most 8388608"));
}

TEST(SettingsCheck, HasTheSettingsThatALoadWouldMake) {
  const Checked checked = check(edited("IKE_PORT=500", "IKE_PORT=501"));
  EXPECT_EQ(checked.form, Checked::SettingsFile);
  ASSERT_NE(checked.settings, nullptr);
  EXPECT_EQ(checked.settings->IKE->IKE_PORT.value, 501);
}

// What a load keeps as it stands is there again after a save, wrong or not.
TEST(SettingsCheck, TellsWhatASaveWouldLose) {
  const struct {
    std::string from;
    std::string to;
    bool loses;
  } rows[] = {
      {"IKE_PORT=500", "IKE_PORT=70000", true},
      {"IKE_PORT=500", "IKE_PORT=500\n# a comment", true},
      {"IKE_PORT=500", "IKE_PORT=500 # a comment", true},
      {"IKE_PORT=500", "IKE_PORT=500\nFOO=1", true},
      {"EXCHANGE_TIMEOUT=90", "EXCHANGE_TIMEOUT=2", true},
      {"        IKE_PORT=500\n", "", false},
      {"NAME=bob", "NAME=alice", false},
      {"NAME=bob", "NAME=", false},
      {"PSK_NAME=\n", "PSK_NAME=a\tb\n", false},
  };
  for (const auto& row : rows) {
    const Checked checked = check(edited(row.from, row.to));
    EXPECT_EQ(std::ranges::any_of(checked.remarks, &inspection::Remark::loses), row.loses)
        << row.to;
  }
}

TEST(SettingsCheck, ShowsNoSecret) {
  const std::string line = "QCD_SECRET=example secret, change it\n";
  for (const char* to : {"QCD_SECRET topsecret\n", "QCD_SECRET=a\ntopsecret\n",
                         "QCD_SECRET=a\ttopsecret\n", "topsecret=a\n", "QCD_SECRETtopsecret=\n"}) {
    EXPECT_THAT(linesOf(edited(line, to)), Not(Contains(HasSubstr("topsecret")))) << to;
  }
}

TEST(Check, KnowsTheFormByTheBeginning) {
  const std::pair<const char*, Checked::Form> rows[] = {
      {"/ROOT=\n", Checked::SettingsFile},
      {"ROOT=\n", Checked::SettingsFile},
      {"\n /ROOT=\n", Checked::SettingsFile},
      {"# IKE.IKE_PORT=1\n/ROOT=\n", Checked::SettingsFile},
      {"", Checked::SettingsFile},
      {"IKE_PORT=500\n", Checked::SettingsFile},
      {"garbage. and more", Checked::SettingsFile},
      {"<LocalSettings/>", Checked::Legacy},
      {"\xEF\xBB\xBF<?xml version='1.0'?>", Checked::Legacy},
      {" \n <a/>", Checked::Legacy},
      {"{}", Checked::Document},
      {"\xEF\xBB\xBF {", Checked::Document},
      {"IKE.IKE_PORT=1\n", Checked::Document},
      {"# a comment\n\nUSERS[bob].PMP_TIMEOUT=20\n", Checked::Document},
  };
  for (const auto& [text, form] : rows) EXPECT_EQ(check(text).form, form) << text;
}

}  // namespace
}  // namespace checking
