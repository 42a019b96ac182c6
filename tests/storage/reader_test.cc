// Loading the settings file: what counts as one, what is reported, and what stays as it was.
#include <gmock/gmock.h>

#include "tests/catalogue/expected_groups.h"
#include "tests/module/call_log.h"
#include "tests/module/loaded_module.h"
#include "tests/support/recording_load_log.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing_support::inQuotes;
using testing_support::RecordingLoadLog;

namespace host {
namespace {

using namespace LPARAMS::Server;

const std::string BYTE_ORDER_MARK = "\xEF\xBB\xBF";
const std::string DEFAULTS = expectedFile(initially);
const std::string AWAY_FROM_DEFAULTS = expectedFile(whenChanged, {whenChanged, initially});

class Reader : public ModuleTest {
 protected:
  /// Loads the text into a fresh module.
  bool load(const std::string& text) {
    module.reload();
    writeFile(settingsPath, text);
    log.reports.clear();
    return root().load(&log);
  }

  const std::string fileFailed = "fileFailed(" + inQuotes(settingsPath) + ")";
  RecordingLoadLog log;
};

TEST_F(Reader, ReadsTheFileOnceAndChangesNothingOnDisk) {
  writeFile(settingsPath, AWAY_FROM_DEFAULTS);
  const size_t descriptors = openDescriptors();
  EXPECT_THAT(callsDuring([&] { EXPECT_TRUE(root().load(&log)); }),
              ElementsAre("systemVarDir", "fopen localsettings.ini r"));
  EXPECT_EQ(openDescriptors(), descriptors);
  EXPECT_EQ(readFile(settingsPath), AWAY_FROM_DEFAULTS);
}

TEST_F(Reader, FillsEveryGroupAndTheUserListInTheOrderOfTheFile) {
  std::string text = AWAY_FROM_DEFAULTS;
  text.replace(text.find("NAME=\n"), 6, "NAME=second\n");
  EXPECT_TRUE(load(text));
  EXPECT_THAT(log.reports, IsEmpty());
  EXPECT_EQ(root().rawSettings, text);
  ASSERT_EQ(root().USERS->items.size(), 2u);
  EXPECT_EQ(root().USERS->items[0]->NAME.value, "a 1");
  EXPECT_EQ(root().USERS->items[1]->NAME.value, "second");
}

TEST_F(Reader, TakesTheRootsHeadWithOrWithoutAMarkAndASlash) {
  const std::string behindHead = DEFAULTS.substr(6);  // behind "/ROOT="
  for (const std::string& head :
       {std::string("/ROOT="), std::string("ROOT="),
        BYTE_ORDER_MARK + "/ROOT=", BYTE_ORDER_MARK + "ROOT=",
        // Empty keys in front count for nothing; the mark may stand alone in the first one.
        std::string("=/ROOT="), std::string("===ROOT="), BYTE_ORDER_MARK + "=/ROOT="}) {
    EXPECT_TRUE(load(head + behindHead)) << inQuotes(head);
    EXPECT_THAT(log.reports, IsEmpty()) << inQuotes(head);
  }
}

TEST_F(Reader, RefusesAFileThatDoesNotBeginWithTheRootsHead) {
  const struct {
    std::string head;
    std::string key;
  } rows[] = {
      {"\n/ROOT=", "\n/ROOT"},
      {" /ROOT=", " /ROOT"},
      {"\t/ROOT=", "\t/ROOT"},
      {"\r\n/ROOT=", "\r\n/ROOT"},
      {"/ ROOT=", " ROOT"},
      {"/ROOT =", "ROOT "},
      {"//ROOT=", "/ROOT"},
      {"/root=", "root"},
      {"/ROOTS=", "ROOTS"},
      {"/OTHER=", "OTHER"},
      {"/IKE=", "IKE"},
      {"IKE_PORT=", "IKE_PORT"},
      {"/=", ""},
      // The mark is taken off once, and off the first key only.
      {BYTE_ORDER_MARK + BYTE_ORDER_MARK + "/ROOT=", BYTE_ORDER_MARK + "/ROOT"},
      {"=" + BYTE_ORDER_MARK + "/ROOT=", BYTE_ORDER_MARK + "/ROOT"},
      {"\xEF\xBB/ROOT=", "\xEF\xBB/ROOT"},
  };
  for (const auto& [head, key] : rows) {
    EXPECT_FALSE(load(head + "\n/IKE=\nIKE_PORT=1\nend=\nend=\n")) << inQuotes(head);
    EXPECT_THAT(log.reports, ElementsAre("rootMismatch(" + inQuotes(key) + ", ROOT)", fileFailed));
    EXPECT_EQ(root().IKE->IKE_PORT.value, 500);
  }
}

TEST_F(Reader, RefusesATextWithoutAnEqualsSign) {
  for (const std::string text : {"hello", "hello\n", "/ROOT\n", "\n"}) {
    EXPECT_FALSE(load(text));
    const std::string key = text.starts_with('/') ? text.substr(1) : text;
    EXPECT_THAT(log.reports, ElementsAre("rootMismatch(" + inQuotes(key) + ", ROOT)", fileFailed));
  }
}

TEST_F(Reader, LeavesEveryValueAtItsDefaultWhenTheRootIsEmpty) {
  // An "end" that the end of the file cuts off closes the block too.
  for (const std::string text : {"/ROOT=\nend=\n", "/ROOT=\nend=", "/ROOT=\nend", "/ROOT=end="}) {
    EXPECT_TRUE(load(text)) << inQuotes(text);
    EXPECT_THAT(log.reports, ElementsAre("paramsMissing(6, 6, ROOT)"));
    EXPECT_EQ(root().rawSettings, DEFAULTS);
  }
}

TEST_F(Reader, KeepsTheValuesThatTheFileDoesNotName) {
  EXPECT_TRUE(load("/ROOT=\n/ADMIN=\nSESSION_EXPTIME=20\nend=\n/LOG=\nend=\nend=\n"));
  EXPECT_THAT(log.reports, ElementsAre(missingReport("ADMIN", 1), missingReport("LOG", 0),
                                       "paramsMissing(4, 6, ROOT)"));
  EXPECT_EQ(root().ADMIN->SESSION_EXPTIME.value, 20u);
  EXPECT_EQ(root().ADMIN->ADMIN_GROUP.value, "admin");
}

TEST_F(Reader, CountsABlockThatOccursTwiceTwice) {
  EXPECT_TRUE(load("/ROOT=\n/ADMIN=\nend=\n/ADMIN=\nend=\nend=\n"));
  EXPECT_THAT(log.reports, ElementsAre(missingReport("ADMIN", 0), missingReport("ADMIN", 0),
                                       "paramsMissing(4, 6, ROOT)"));
}

TEST_F(Reader, IgnoresWhatFollowsTheRootsEnd) {
  EXPECT_TRUE(load(DEFAULTS + "IKE_PORT=1\n/IKE=\nIKE_PORT=2\n/UNKNOWN=\nhello"));
  EXPECT_THAT(log.reports, IsEmpty());
  EXPECT_EQ(root().IKE->IKE_PORT.value, 500);
}

TEST_F(Reader, ReportsWhatItCannotTakeAndGoesOn) {
  EXPECT_TRUE(
      load("/ROOT=\n"
           "  UNKNOWN=1\n"
           "  /UNKNOWN=\n    INNER=2\n    /DEEPER=\n      X=3\n    end=\n  end=\n"
           "  /ADMIN=\n"
           "    SESSION_EXPTIME=abc\n"
           "    LOGIN_ON_SAVE_TOKEN_PASSWORD=0 x\n"
           "    OTHER=4\n"
           "  end=\n"
           "  /LOG=\n"
           "    LOG_LEVEL=_LL_NONE\n"
           "  end=\n"
           "end=\n"));
  EXPECT_THAT(log.reports,
              ElementsAre("unknownParam(\"UNKNOWN\", ROOT)", "unknownParam(\"UNKNOWN\", ROOT)",
                          "unknownParam(\"INNER\", UNKNOWN)", "unknownParam(\"DEEPER\", UNKNOWN)",
                          "unknownParam(\"X\", DEEPER)", "badValue(SESSION_EXPTIME, \"abc\")",
                          "extraText(LOGIN_ON_SAVE_TOKEN_PASSWORD, \" x\")",
                          "unknownParam(\"OTHER\", ADMIN)", missingReport("ADMIN", 2),
                          "badValue(LOG_LEVEL, \"_LL_NONE\")", missingReport("LOG", 1),
                          "paramsMissing(4, 6, ROOT)"));
  EXPECT_FALSE(root().ADMIN->LOGIN_ON_SAVE_TOKEN_PASSWORD.value);
}

TEST_F(Reader, MovesIntoItsLimitsWhatTheFirstCommandWroteBeyondThem) {
  // The bridge looks at no limit, the save only at names, the load at both.
  root().POLICY->PMP_TIMEOUT.value = 0;
  root().POLICY->PMP_IDTYPE.value = 6;
  const std::string odd = execute(READ_GROUP, framed("POLICY")).output;
  module.reload();
  ASSERT_EQ(execute(WRITE_GROUP, framed("POLICY", odd)).result, 1);
  EXPECT_EQ(execute(READ_GROUP, framed("POLICY")).output, odd);

  ASSERT_TRUE(root().save(nullptr));
  EXPECT_EQ(root().POLICY->PMP_TIMEOUT.value, 0u);
  EXPECT_EQ(root().POLICY->PMP_IDTYPE.value, LPARAMS::Server::PMPID_KEY_ID);
  EXPECT_THAT(readFile(settingsPath), testing::HasSubstr("        PMP_IDTYPE=PMPID_KEY_ID\n"));
  EXPECT_THAT(readFile(settingsPath), testing::HasSubstr("        PMP_TIMEOUT=0\n"));

  module.reload();
  EXPECT_TRUE(root().load(&log));
  EXPECT_THAT(log.reports, IsEmpty());
  EXPECT_EQ(root().POLICY->PMP_TIMEOUT.value, 5u);
}

TEST_F(Reader, SkipsUnknownBlocksHoweverDeep) {
  constexpr int DEPTH = 100000;
  std::string text = "/ROOT=\n";
  for (int i = 0; i < DEPTH; ++i) text += "/U=\n";
  for (int i = 0; i < DEPTH; ++i) text += "end=\n";
  EXPECT_TRUE(load(text + "end=\n"));
  ASSERT_EQ(log.reports.size(), DEPTH + 1u);
  EXPECT_EQ(log.reports.back(), "paramsMissing(6, 6, ROOT)");
}

TEST_F(Reader, AppendsTheUsersOnceMoreInASecondLoad) {
  ASSERT_TRUE(load(AWAY_FROM_DEFAULTS));
  EXPECT_TRUE(root().load(&log));
  EXPECT_THAT(log.reports, IsEmpty());
  ASSERT_EQ(root().USERS->items.size(), 4u);
  EXPECT_EQ(root().USERS->items[2]->NAME.value, "a 1");
  EXPECT_FALSE(root().isChanged());
}

TEST_F(Reader, SucceedsWithoutAnyFileAndLeavesTheDefaults) {
  EXPECT_TRUE(root().load(&log));
  EXPECT_THAT(log.reports, IsEmpty());
  EXPECT_EQ(root().rawSettings, DEFAULTS);
  EXPECT_FALSE(exists(settingsPath));
}

}  // namespace
}  // namespace host
