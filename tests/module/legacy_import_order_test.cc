// The import of the settings of earlier versions as the parser and the file system see it: what is
// called, in which order, and what happens to the document and the files when something throws.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/markup_document.h"
#include "tests/module/call_log.h"
#include "tests/module/file_calls.h"
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

TEST_F(LegacyImportOrder, HappensWhateverKeepsTheSettingsFileFromBeingOpened) {
  document().elements = {localSettings({userModule({param("PMS_LOG_LEVEL", "3")})})};
  writeFile(settingsPath, "/ROOT=\nend=\n");
  for (const int error : {EACCES, EPERM, ELOOP, ENOTDIR, ENAMETOOLONG, EMFILE, ENFILE, ENOMEM, EIO,
                          ENXIO, EOVERFLOW, ESTALE}) {
    SCOPED_TRACE(error);
    module.reload();
    writeFile(legacyPath, "any text");
    refuseOpening(settingsPath, error);
    EXPECT_EQ(callsOfLoad(), completeImport);
    EXPECT_TRUE(result);
    EXPECT_THAT(log.reports, IsEmpty());
    EXPECT_EQ(root().POLICY->PMP_LOGLEVEL.value, 3);
    EXPECT_TRUE(exists(settingsPath));
  }
}

TEST_F(LegacyImportOrder, HappensWhenTheSettingsFileIsALinkToItself) {
  ASSERT_EQ(symlink(settingsPath.c_str(), settingsPath.c_str()), 0);
  EXPECT_EQ(callsOfLoad(), completeImport);
  EXPECT_TRUE(result);
  EXPECT_THAT(log.reports, IsEmpty());
}

TEST_F(LegacyImportOrder, TakesTheOtherFileWhateverKeepsTheFirstFromBeingOpened) {
  const std::string place = directory.path + "system/";
  ASSERT_EQ(mkdir(place.c_str(), 0700), 0);
  lead(SYSTEM_DIRECTORY, place);
  for (const int error : {EACCES, ELOOP, EMFILE, EIO}) {
    SCOPED_TRACE(error);
    module.reload();
    refuseOpening({}, 0);
    writeFile(legacyPath, "any text");
    writeFile(place + "localsettings.xml", "any text");
    refuseOpening(legacyPath, error);
    EXPECT_THAT(callsOfLoad(),
                ElementsAre("systemVarDir", "fopen localsettings.ini r", "systemVarDir",
                            "fopen localsettings.xml r", "fopen " + SYSTEM_FILE + " r",
                            "parse " + SYSTEM_FILE, "release", "remove localsettings.xml",
                            "remove " + SYSTEM_FILE));
    EXPECT_TRUE(result);
    EXPECT_THAT(log.reports, IsEmpty());
    EXPECT_FALSE(exists(legacyPath));
    EXPECT_FALSE(exists(place + "localsettings.xml"));
  }
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

TEST_F(LegacyImportOrder, ClosesItsProbeBeforeTheDocumentIsRead) {
  bool openWhileReading = true;
  document().onLoad = [&] { openWhileReading = isOpen(legacyPath); };
  EXPECT_EQ(callsOfLoad(), completeImport);
  EXPECT_FALSE(openWhileReading);
}

TEST_F(LegacyImportOrder, DoesNotLookAtTheAnswerOfTheParser) {
  document().loads = false;
  EXPECT_EQ(callsOfLoad(), completeImport);
  EXPECT_TRUE(result);
  EXPECT_THAT(log.reports, IsEmpty());
  EXPECT_FALSE(exists(legacyPath));

  writeFile(legacyPath, "any text");
  document().elements = {localSettings({userModule({param("PMS_LOG_LEVEL", "3")})})};
  EXPECT_TRUE(root().load(&log));
  EXPECT_EQ(root().POLICY->PMP_LOGLEVEL.value, 3);
  EXPECT_FALSE(exists(legacyPath));
}

TEST_F(LegacyImportOrder, TakesTextsWithTheirBlanks) {
  document().elements = {localSettings(
      {userModule({param("LOCAL_CERT_FOR_PM_SUBJECT", " C=XX, \t O=Some  One \n")}),
       userModule({param("POLICY_SOURCE_TYPE", "1"), param("POLICY_SOURCE", " one, two ")}),
       userModule({param("POLICY_SOURCE_TYPE", "2"), param("POLICY_SOURCE", "\tfile ")}),
       ikeModule({param("ike_nat_t_policy", " 3")})})};
  EXPECT_EQ(callsOfLoad(), completeImport);
  EXPECT_EQ(root().POLICY->LOCAL_CERT_SUBJECT.value, " C=XX, \t O=Some  One \n");
  EXPECT_EQ(root().POLICY->PMP_SERVERS.value, " one, two ");
  EXPECT_EQ(root().POLICY->SYSTEM_LSP_FROM_FILE.value, "\tfile ");
  EXPECT_EQ(root().IKE->NATT_POLICY.value, 0) << "no number for this parser";
}

TEST_F(LegacyImportOrder, TakesATypeOrANameWithBlanksForAnother) {
  std::vector<Element> modules;
  for (const char* type : {" 1", "1 ", "\t1", "1\n", " 2", "2 ", "\n2", "2\r", " "}) {
    modules.push_back(
        userModule({param("POLICY_SOURCE_TYPE", type), param("POLICY_SOURCE", "source")}));
  }
  for (const char* name : {" PMS_LOG_LEVEL", "PMS_LOG_LEVEL ", "PMS_LOG_LEVEL\n"}) {
    modules.push_back(userModule({param(name, "3")}));
  }
  for (const char* name : {" USER_ACT_MODULE_ID", "USER_ACT_MODULE_ID "}) {
    modules.push_back({"Module", name, {}, {param("PMS_LOG_LEVEL", "3")}});
  }
  document().elements = {localSettings(modules)};
  const std::string before = execute(READ_GROUP, framed("POLICY")).output;
  EXPECT_EQ(callsOfLoad(), completeImport);
  EXPECT_EQ(execute(READ_GROUP, framed("POLICY")).output, before);
}

// Each value is assigned under its parameter's own lock: the locks that are taken tell the order.

class LegacyAssignments : public LegacyImportOrder {
 protected:
  LegacyAssignments() {
    recordLocks();
    module.reload();
  }

  /// The names of what was locked between the module's lock and the root's, which the snapshot
  /// takes.
  std::vector<std::string> assignmentsOf(std::vector<Element> modules) {
    document().elements = {localSettings(std::move(modules))};
    recordTakings();
    EXPECT_TRUE(root().load(&log));
    std::vector<std::string> names;
    for (const auto* lock : locksTaken()) {
      if (lock == &root()) break;
      if (const std::string name = nameOf(lock); !name.empty()) names.push_back(name);
    }
    return names;
  }

 private:
  /// Empty for a lock that is not the module's.
  std::string nameOf(const basekit::ObjectLevelLockable* lock) const {
    if (lock == locksMade().front()) return "g_ioLock";
    for (const LPARAMS::Server::Param* group : root().fileParams) {
      if (lock == group) return group->name;
      for (const auto* param : static_cast<const LPARAMS::Server::ParamGroup*>(group)->fileParams) {
        if (lock == param) return std::string(group->name) + "." + param->name;
      }
    }
    return {};
  }
};

TEST_F(LegacyAssignments, OfThePolicySourceComeInTheirOrder) {
  EXPECT_THAT(assignmentsOf({userModule(
                  {param("POLICY_SOURCE_TYPE", "1"), param("POLICY_SOURCE", "servers")})}),
              ElementsAre("g_ioLock", "POLICY.SYSTEM_LSP_SOURCE", "POLICY.PMP_SERVERS",
                          "POLICY.PMP_AUTH", "POLICY.PMP_IDTYPE", "POLICY.PMP_IDDATA"));
  writeFile(legacyPath, "any text");
  EXPECT_THAT(
      assignmentsOf({userModule({param("POLICY_SOURCE_TYPE", "2"), param("POLICY_SOURCE", "f")})}),
      ElementsAre("g_ioLock", "POLICY.SYSTEM_LSP_FROM_FILE", "POLICY.SYSTEM_LSP_SOURCE"));
}

TEST_F(LegacyAssignments, OfThePolicySourceComeLastInTheirModuleWhereverItStands) {
  EXPECT_THAT(assignmentsOf({userModule(
                  {param("POLICY_SOURCE", "file"), param("POLICY_SOURCE_TYPE", "2"),
                   param("PMS_LOG_LEVEL", "2"), param("LOCAL_CERT_FOR_PM_SUBJECT", "subject")})}),
              ElementsAre("g_ioLock", "POLICY.PMP_LOGLEVEL", "POLICY.LOCAL_CERT_SUBJECT",
                          "POLICY.SYSTEM_LSP_FROM_FILE", "POLICY.SYSTEM_LSP_SOURCE"));
}

TEST_F(LegacyAssignments, ComeInTheOrderOfTheDocument) {
  const std::vector<Element> policy = {param("POLICY_SOURCE_TYPE", "2"),
                                       param("POLICY_SOURCE", "file")};
  const std::vector<Element> natt = {param("ike_nat_t_policy", "2"),
                                     param("ike_nat_t_policy", "3")};
  EXPECT_THAT(assignmentsOf({userModule(policy), ikeModule(natt)}),
              ElementsAre("g_ioLock", "POLICY.SYSTEM_LSP_FROM_FILE", "POLICY.SYSTEM_LSP_SOURCE",
                          "IKE.NATT_POLICY", "IKE.NATT_POLICY"));
  writeFile(legacyPath, "any text");
  EXPECT_THAT(assignmentsOf({ikeModule(natt), userModule(policy)}),
              ElementsAre("g_ioLock", "IKE.NATT_POLICY", "IKE.NATT_POLICY",
                          "POLICY.SYSTEM_LSP_FROM_FILE", "POLICY.SYSTEM_LSP_SOURCE"));
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
