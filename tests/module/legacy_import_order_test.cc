// The import of the settings of earlier versions as the parser and the file system see it: what is
// called, in which order, and what happens to the document and the files when something throws.
#include <gmock/gmock.h>

#include "platform/markup_document.h"
#include "tests/module/call_log.h"
#include "tests/module/loaded_module.h"
#include "tests/module/lock_calls.h"
#include "tests/module/scripted_document.h"
#include "tests/support/lock_probe.h"
#include "tests/support/recording_load_log.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing_support::inQuotes;
using testing_support::isLocked;
using testing_support::RecordingLoadLog;

namespace host {
namespace {

Element param(const std::string& name, const std::string& text) {
  return {"Param", name, text, {}};
}
Element userModule(std::vector<Element> params) {
  return {"Module", "USER_ACT_MODULE_ID", {}, std::move(params)};
}
Element ikeModule(std::vector<Element> params) {
  return {"Module", "ISAKMP_MODULE_ID", {}, std::move(params)};
}
Element localSettings(std::vector<Element> modules) {
  return {"LocalSettings", {}, {}, std::move(modules)};
}

const std::string SYSTEM_FILE = "/etc/kestrel/localsettings.xml";

class LegacyImportOrder : public ModuleTest {
 protected:
  LegacyImportOrder() {
    document() = {};
    writeFile(legacyPath, "any text");
  }

  /// Loads and returns what was called meanwhile.
  std::vector<std::string> callsOfLoad() {
    return callsDuring([&] { result = root().load(&log); });
  }

  const std::string legacyPath = directory.path + "localsettings.xml";
  const std::vector<std::string> completeImport = {"systemVarDir",
                                                   "fopen localsettings.ini r",
                                                   "systemVarDir",
                                                   "fopen localsettings.xml r",
                                                   "parse " + legacyPath,
                                                   "release",
                                                   "remove localsettings.xml",
                                                   "remove " + SYSTEM_FILE};
  const std::vector<std::string> importWithoutRemoval = {completeImport.begin(),
                                                         completeImport.end() - 2};
  const std::string fileFailed = "fileFailed(" + inQuotes(settingsPath) + ")";
  RecordingLoadLog log;
  bool result = false;
};

TEST_F(LegacyImportOrder, ProbesParsesReleasesAndThenDeletesBothFiles) {
  EXPECT_EQ(callsOfLoad(), completeImport);
  EXPECT_TRUE(result);
  EXPECT_THAT(log.reports, IsEmpty());
  EXPECT_FALSE(exists(legacyPath));
}

TEST_F(LegacyImportOrder, WithoutAFileDoesNothing) {
  ASSERT_EQ(remove(legacyPath.c_str()), 0);
  EXPECT_THAT(callsOfLoad(),
              ElementsAre("systemVarDir", "fopen localsettings.ini r", "systemVarDir",
                          "fopen localsettings.xml r", "fopen " + SYSTEM_FILE + " r"));
  EXPECT_TRUE(result);
  EXPECT_THAT(log.reports, IsEmpty());
}

TEST_F(LegacyImportOrder, DoesNotHappenWhenThereIsASettingsFile) {
  writeFile(settingsPath, "/ROOT=\nend=\n");
  EXPECT_THAT(callsOfLoad(), ElementsAre("systemVarDir", "fopen localsettings.ini r"));
  EXPECT_TRUE(exists(legacyPath));
}

TEST_F(LegacyImportOrder, VisitsEveryElementOfEveryLevel) {
  document().elements = {
      {"Other", {}, {}, {userModule({param("LOCAL_CERT_FOR_PM_SUBJECT", "outside")})}},
      localSettings({
          {"Other", "USER_ACT_MODULE_ID", {}, {param("PMS_LOG_LEVEL", "3")}},
          userModule({{"Other", "PMS_LOG_LEVEL", "3", {}},
                      param("PMS_LOG_LEVEL", "2"),
                      param("POLICY_SOURCE_TYPE", "2"),
                      param("POLICY_SOURCE", "first")}),
          {"Module", "UNKNOWN", {}, {param("LOCAL_CERT_FOR_PM_SUBJECT", "unknown module")}},
          {"Module", {}, {}, {param("LOCAL_CERT_FOR_PM_SUBJECT", "module without a name")}},
          ikeModule({param("other", "0"), param("ike_nat_t_policy", "3")}),
      }),
      {"Other", {}, {}, {}},
      localSettings({userModule({param("LOCAL_CERT_FOR_PM_SUBJECT", "last")})}),
  };
  EXPECT_EQ(callsOfLoad(), completeImport);
  EXPECT_EQ(root().POLICY->PMP_LOGLEVEL.value, 2);
  EXPECT_EQ(root().POLICY->SYSTEM_LSP_FROM_FILE.value, "first");
  EXPECT_EQ(root().IKE->NATT_POLICY.value, 3);
  EXPECT_EQ(root().POLICY->LOCAL_CERT_SUBJECT.value, "last");
}

TEST_F(LegacyImportOrder, ReadsNoMoreThanTheTextOfAnElement) {
  // The parser's texts have no terminator, and a digit behind them.
  document().elements = {localSettings(
      {userModule({param("PMS_LOG_LEVEL", "1"), param("POLICY_SOURCE_TYPE", "1"),
                   param("POLICY_SOURCE", "servers"), param("LOCAL_CERT_FOR_PM_SUBJECT", "")}),
       ikeModule({param("ike_nat_t_policy", "")})})};
  root().POLICY->LOCAL_CERT_SUBJECT.value = "before";
  EXPECT_EQ(callsOfLoad(), completeImport);
  EXPECT_EQ(root().POLICY->PMP_LOGLEVEL.value, 1);
  EXPECT_EQ(root().POLICY->PMP_SERVERS.value, "servers");
  EXPECT_EQ(root().POLICY->LOCAL_CERT_SUBJECT.value, "");
  EXPECT_EQ(root().IKE->NATT_POLICY.value, 0);
}

TEST_F(LegacyImportOrder, AFileThatIsNotWellFormedIsReleasedAndDeletedAllTheSame) {
  document().onLoad = [] { throw TTT("not well formed"); };
  EXPECT_EQ(callsOfLoad(), completeImport);
  EXPECT_TRUE(result);
  EXPECT_THAT(log.reports, IsEmpty());
}

/// Two values, of which handing out the second one throws.
class LegacyImportBreaksOff : public LegacyImportOrder {
 protected:
  template <typename Thrown>
  void throwAtTheSecondValue(const Thrown& thrown) {
    document().elements = {localSettings({userModule(
        {param("LOCAL_CERT_FOR_PM_SUBJECT", "assigned"), param("PMS_LOG_LEVEL", "2")})})};
    document().onContent = [thrown](const Element& element) {
      if (element.name == "PMS_LOG_LEVEL") throw thrown;
    };
  }

  void expectTheFirstValueOnly() {
    EXPECT_EQ(root().POLICY->LOCAL_CERT_SUBJECT.value, "assigned");
    EXPECT_EQ(root().POLICY->PMP_LOGLEVEL.value, 1);
  }
};

TEST_F(LegacyImportBreaksOff, AtAnErrorOfTheParserWithBothFilesDeleted) {
  throwAtTheSecondValue(TTT("odd"));
  EXPECT_EQ(callsOfLoad(), completeImport);
  EXPECT_TRUE(result);
  EXPECT_THAT(log.reports, IsEmpty());
  expectTheFirstValueOnly();
  EXPECT_FALSE(root().isChanged());
}

TEST_F(LegacyImportBreaksOff, AtAStandardExceptionWithTheFilesKept) {
  throwAtTheSecondValue(std::runtime_error("out of order"));
  EXPECT_EQ(callsOfLoad(), importWithoutRemoval);
  EXPECT_FALSE(result);
  EXPECT_THAT(log.reports, ElementsAre(fileFailed));
  expectTheFirstValueOnly();
  EXPECT_FALSE(root().isChanged());
  EXPECT_TRUE(exists(legacyPath));
}

TEST_F(LegacyImportBreaksOff, AtAnythingElseWithTheFilesKeptAndNoLockHeld) {
  recordLocks();
  module.reload();
  throwAtTheSecondValue(5);
  EXPECT_EQ(callsDuring([&] { EXPECT_THROW((void)root().load(&log), int); }), importWithoutRemoval);
  EXPECT_THAT(log.reports, IsEmpty());
  expectTheFirstValueOnly();
  EXPECT_TRUE(exists(legacyPath));
  for (auto* lock : locksMade()) EXPECT_FALSE(isLocked(*lock));
}

TEST_F(LegacyImportOrder, WithoutADirectoryFailsAndKeepsTheFiles) {
  int asked = 0;
  platform().onVarDir = [&] {
    if (++asked == 2) throw std::runtime_error("no directory");
  };
  EXPECT_THAT(callsOfLoad(),
              ElementsAre("systemVarDir", "fopen localsettings.ini r", "systemVarDir"));
  EXPECT_FALSE(result);
  EXPECT_THAT(log.reports, ElementsAre(fileFailed));
  EXPECT_TRUE(exists(legacyPath));
}

TEST_F(LegacyImportOrder, CallsNoObserver) {
  static int called;
  called = 0;
  root().POLICY->observers = {[](int) { ++called; }};
  root().IKE->observers = root().POLICY->observers;
  document().elements = {localSettings(
      {userModule({param("PMS_LOG_LEVEL", "2")}), ikeModule({param("ike_nat_t_policy", "2")})})};
  EXPECT_EQ(callsOfLoad(), completeImport);
  EXPECT_EQ(root().POLICY->PMP_LOGLEVEL.value, 2);
  EXPECT_EQ(called, 0);
}

}  // namespace
}  // namespace host
