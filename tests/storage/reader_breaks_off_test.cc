// Loads that do not come to the end of the file: what is reported and what stays, and to whom
// reports go afterwards.
#include <gmock/gmock.h>

#include <filesystem>
#include <new>
#include <sstream>
#include <stdexcept>

#include "tests/catalogue/expected_groups.h"
#include "tests/module/call_log.h"
#include "tests/module/child_process.h"
#include "tests/module/failing_allocation.h"
#include "tests/module/loaded_module.h"
#include "tests/module/lock_calls.h"
#include "tests/module/scripted_param.h"
#include "tests/support/lock_probe.h"
#include "tests/support/recording_load_log.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing_support::inQuotes;
using testing_support::isLocked;
using testing_support::RecordingLoadLog;

namespace host {
namespace {

using namespace std::chrono_literals;

/// Throws at the first unknown key, after it has written it down.
template <typename Thrown>
class ThrowingLoadLog : public RecordingLoadLog {
 public:
  explicit ThrowingLoadLog(Thrown thrown) : thrown_(thrown) {}
  void unknownParam(const std::string& key, const std::string& group) override {
    RecordingLoadLog::unknownParam(key, group);
    throw thrown_;
  }

 private:
  Thrown thrown_;
};

const std::string ONE_VALUE_THEN_UNKNOWN = "/ROOT=\n/IKE=\nIKE_PORT=1\nUNKNOWN=2\nNATT_PORT=3\n";

class ReaderBreaksOff : public ModuleTest {
 protected:
  /// Loads a value that cannot be read, outside of any load of the file. Where its report goes
  /// tells whether the module still points at a log.
  void loadBadValue() {
    std::istringstream text("abc\n");
    EXPECT_TRUE(root().IKE->getParam("IKE_PORT")->load(text));
  }

  const std::string fileFailed = "fileFailed(" + inQuotes(settingsPath) + ")";
  RecordingLoadLog log;
};

TEST_F(ReaderBreaksOff, AtTheEndOfTheFileInsideABlock) {
  const struct {
    const char* text;
    std::vector<std::string> reports;
  } rows[] = {
      {"/ROOT=", {}},
      // What is left of the line counts as a key, a blank one.
      {"/ROOT=\n", {"unknownParam(\"\", ROOT)"}},
      {"/ROOT=\n/LOG=\nLOG_LEVEL=_LL_DETAILS\n", {"paramFailed(\"LOG\", ROOT)"}},
      {"/ROOT=\n/LOG=\nLOG_LEVEL=_LL_DETAILS", {"paramFailed(\"LOG\", ROOT)"}},
      // The end of the block is there, but it is that of LOG, and the root goes on.
      {"/ROOT=\n/LOG=\nLOG_LEVEL=_LL_DETAILS\nend=\n", {LPARAMS::Server::missingReport("LOG", 1)}},
      {"/ROOT=\n/USERS=\n/USER=\nNAME=anna\n",
       {"paramFailed(\"USER\", USERS)", "paramFailed(\"USERS\", ROOT)"}},
      {"/ROOT=\n/UNKNOWN=\nX=1\n",
       {"unknownParam(\"UNKNOWN\", ROOT)", "unknownParam(\"X\", UNKNOWN)"}},
  };
  for (auto [text, reports] : rows) {
    SCOPED_TRACE(text);
    module.reload();
    writeFile(settingsPath, text);
    log.reports.clear();
    EXPECT_FALSE(root().load(&log));
    reports.push_back(fileFailed);
    EXPECT_EQ(log.reports, reports);
  }
}

TEST_F(ReaderBreaksOff, AtAMemberThatFails) {
  ScriptedParam odd(*root().ADMIN);
  odd.onLoad = [](std::istream&) { return false; };
  writeFile(settingsPath, "/ROOT=\n/ADMIN=\nSCRIPTED=\nSESSION_EXPTIME=20\nend=\nend=\n");
  EXPECT_FALSE(root().load(&log));
  EXPECT_THAT(log.reports, ElementsAre("paramFailed(\"SCRIPTED\", ADMIN)",
                                       "paramFailed(\"ADMIN\", ROOT)", fileFailed));
  EXPECT_EQ(root().ADMIN->SESSION_EXPTIME.value, 10u);
}

TEST_F(ReaderBreaksOff, WithTheValuesReadSoFarInPlaceAndInTheSnapshot) {
  writeFile(settingsPath, "/ROOT=\n/LOG=\nLOG_LEVEL=_LL_DETAILS\n");
  ASSERT_FALSE(root().load(&log));
  EXPECT_EQ(root().LOG->LOG_LEVEL.value, 2);
  EXPECT_THAT(root().rawSettings, testing::HasSubstr("        LOG_LEVEL=_LL_DETAILS\n"));
  EXPECT_FALSE(root().isChanged());
  EXPECT_THAT(callsDuring([&] { EXPECT_TRUE(root().save(nullptr)); }), IsEmpty());
}

TEST_F(ReaderBreaksOff, AtAStandardExceptionWhichTheModuleCatches) {
  writeFile(settingsPath, ONE_VALUE_THEN_UNKNOWN);
  ThrowingLoadLog throwing{std::runtime_error("out of order")};
  EXPECT_FALSE(root().load(&throwing));
  EXPECT_THAT(throwing.reports, ElementsAre("unknownParam(\"UNKNOWN\", IKE)", fileFailed));
  EXPECT_EQ(root().IKE->IKE_PORT.value, 1);
  EXPECT_EQ(root().IKE->NATT_PORT.value, 4500);
  EXPECT_FALSE(root().isChanged());

  loadBadValue();
  EXPECT_EQ(throwing.reports.size(), 2u) << "the log is not in use any more";
}

TEST_F(ReaderBreaksOff, AtAnythingElseWhichLeavesTheLoad) {
  recordLocks();
  module.reload();
  writeFile(settingsPath, ONE_VALUE_THEN_UNKNOWN);
  ThrowingLoadLog throwing{5};
  EXPECT_THROW((void)root().load(&throwing), int);
  EXPECT_THAT(throwing.reports, ElementsAre("unknownParam(\"UNKNOWN\", IKE)"));
  EXPECT_EQ(root().IKE->IKE_PORT.value, 1);
  EXPECT_EQ(root().rawSettings, "");
  for (auto* lock : locksMade()) EXPECT_FALSE(isLocked(*lock));

  // Kept oddity: the module still reports to the log of the load that was left.
  loadBadValue();
  EXPECT_EQ(throwing.reports.back(), "badValue(IKE_PORT, \"abc\")");
  // Until the next load is over.
  EXPECT_FALSE(root().load(&log));
  loadBadValue();
  EXPECT_EQ(throwing.reports.size(), 2u);
}

/// Writes down whether the file is open while it is reported.
class WatchingLoadLog : public RecordingLoadLog {
 public:
  explicit WatchingLoadLog(std::string path) : path_(std::move(path)) {}

  void unknownParam(const std::string&, const std::string&) override { look("unknownParam"); }
  void rootMismatch(const std::string&, const std::string&) override { look("rootMismatch"); }
  void fileFailed(const std::string&) override { look("fileFailed"); }

 private:
  void look(const std::string& report) {
    reports.push_back(report + (isOpen(path_) ? " while it is open" : " when it is closed"));
  }

  const std::string path_;
};

TEST_F(ReaderBreaksOff, WithTheFileClosedBeforeItIsReported) {
  const struct {
    const char* text;
    const char* whileReading;
  } rows[] = {
      {"hello=", "rootMismatch while it is open"},
      {"/ROOT=\nUNKNOWN=1\n", "unknownParam while it is open"},
  };
  for (const auto& [text, whileReading] : rows) {
    writeFile(settingsPath, text);
    WatchingLoadLog watching(settingsPath);
    EXPECT_FALSE(root().load(&watching));
    ASSERT_FALSE(watching.reports.empty());
    EXPECT_EQ(watching.reports.front(), whileReading);
    EXPECT_EQ(watching.reports.back(), "fileFailed when it is closed");
  }
}

TEST_F(ReaderBreaksOff, WithTheFileClosedBeforeItIsReportedAfterAnExceptionToo) {
  ScriptedParam odd(*root().ADMIN);
  bool openInside = false;
  odd.onLoad = [&](std::istream&) -> bool {
    openInside = isOpen(settingsPath);
    throw std::runtime_error("out of order");
  };
  writeFile(settingsPath, "/ROOT=\n/ADMIN=\nSCRIPTED=\nend=\nend=\n");
  WatchingLoadLog watching(settingsPath);
  EXPECT_FALSE(root().load(&watching));
  EXPECT_TRUE(openInside);
  EXPECT_THAT(watching.reports, ElementsAre("fileFailed when it is closed"));
}

TEST_F(ReaderBreaksOff, WithTheReportBeforeTheSnapshotAndTheLogInUseUntilAfterIt) {
  ScriptedParam odd(*root().ADMIN);
  writeFile(settingsPath, "hello=");
  WatchingLoadLog watching(settingsPath);
  odd.onSave = [&](std::ostream&) {
    watching.reports.emplace_back("snapshot");
    loadBadValue();
    return true;
  };
  EXPECT_FALSE(root().load(&watching));
  EXPECT_THAT(watching.reports,
              ElementsAre("rootMismatch while it is open", "fileFailed when it is closed",
                          "snapshot", "badValue(IKE_PORT, \"abc\")"));
}

TEST_F(ReaderBreaksOff, WhenThereIsNoDirectoryAndWorksLaterOn) {
  writeFile(settingsPath, "/ROOT=\nend=\n");
  platform().onVarDir = [] { throw std::runtime_error("no directory"); };
  EXPECT_FALSE(root().load(&log));
  EXPECT_THAT(log.reports, ElementsAre("fileFailed(\"\")")) << "nobody knows the path";
  loadBadValue();
  EXPECT_EQ(log.reports.size(), 1u);

  platform().onVarDir = nullptr;
  EXPECT_TRUE(root().load(&log));
  EXPECT_EQ(log.reports.back(), "paramsMissing(6, 6, ROOT)");
}

TEST_F(ReaderBreaksOff, WhenThereIsNoDirectoryAtFirstAndSaysWhichFileItWouldHaveRead) {
  writeFile(settingsPath, "/ROOT=\nend=\n");
  int asked = 0;
  platform().onVarDir = [&] {
    if (++asked == 1) throw std::runtime_error("not yet");
  };
  EXPECT_FALSE(root().load(&log));
  EXPECT_THAT(log.reports, ElementsAre(fileFailed));
}

TEST_F(ReaderBreaksOff, ForWantOfMemoryAndSaysWhichFileItIs) {
  writeFile(settingsPath, "/ROOT=\n/IKE=\nIKE_PORT=1\nend=\nend=\n");
  constexpr int MORE_THAN_A_LOAD_MAKES = 1000;
  int failures = 0;
  for (bool failed = true; failed && failures < MORE_THAN_A_LOAD_MAKES;) {
    module.reload();  // so that the path is not known
    RecordingLoadLog log;
    bool result = false;
    bool left = false;
    failAllocation(failures + 1);
    try {
      result = root().load(&log);
    } catch (const std::bad_alloc&) {
      left = true;  // not from the reading, but from the snapshot behind it
    }
    failed = allocationHasFailed();
    failAllocation(0);
    SCOPED_TRACE("allocation " + std::to_string(failures + 1));
    if (failed) ++failures;
    EXPECT_TRUE(failed || result);
    if (!result && !left) {
      ASSERT_THAT(log.reports, testing::Not(IsEmpty()));
      EXPECT_EQ(log.reports.back(), fileFailed);
    }
  }
  EXPECT_GT(failures, 5);
  EXPECT_LT(failures, MORE_THAN_A_LOAD_MAKES);
}

TEST_F(ReaderBreaksOff, WhenAskingForTheDirectoryThrowsAnythingElse) {
  recordLocks();
  module.reload();
  platform().onVarDir = [] { throw 5; };
  EXPECT_THROW((void)root().load(&log), int);
  EXPECT_THAT(log.reports, IsEmpty());
  for (auto* lock : locksMade()) EXPECT_FALSE(isLocked(*lock));
  loadBadValue();
  EXPECT_THAT(log.reports, ElementsAre("badValue(IKE_PORT, \"abc\")"));
}

TEST_F(ReaderBreaksOff, NoLogIsInUseAfterALoad) {
  writeFile(settingsPath, "/ROOT=\nend=\n");
  ASSERT_TRUE(root().load(&log));
  log.reports.clear();
  loadBadValue();
  EXPECT_THAT(log.reports, IsEmpty());

  RecordingLoadLog second;
  ASSERT_TRUE(root().load(&second));
  EXPECT_THAT(second.reports, ElementsAre("paramsMissing(6, 6, ROOT)"));
  EXPECT_THAT(log.reports, IsEmpty());
}

// Kept oddity: the search for the first key does not notice the end of the input.

class ReaderGoesOnForEver : public ReaderBreaksOff {
 protected:
  testing::AssertionResult keepsLoading() {
    return keepsBusyInChild([this] { (void)root().load(&log); }, 500ms);
  }
};

TEST_F(ReaderGoesOnForEver, InAnEmptyFile) {
  writeFile(settingsPath, "");
  EXPECT_TRUE(keepsLoading());
}

TEST_F(ReaderGoesOnForEver, InAFileOfNothingButEqualsSigns) {
  writeFile(settingsPath, "====");
  EXPECT_TRUE(keepsLoading());
}

TEST_F(ReaderGoesOnForEver, InAFileOfNothingButAByteOrderMark) {
  writeFile(settingsPath, "\xEF\xBB\xBF");
  EXPECT_TRUE(keepsLoading());
}

TEST_F(ReaderGoesOnForEver, InADirectoryInPlaceOfTheFile) {
  std::filesystem::create_directory(settingsPath);
  EXPECT_TRUE(keepsLoading());
}

}  // namespace
}  // namespace host
