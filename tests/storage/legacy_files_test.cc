// The two places of the older settings file: which one is imported, and that both are deleted. The
// real directory of the system is never touched: calls that name it are led to one of the test, and
// where mounts are allowed each test is run once more with an /etc of its own.
#include <gmock/gmock.h>

#include <filesystem>

#include "tests/module/call_log.h"
#include "tests/module/child_process.h"
#include "tests/module/file_calls.h"
#include "tests/module/loaded_module.h"
#include "tests/support/private_mounts.h"
#include "tests/support/recording_load_log.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace host {
namespace {

std::string documentWithSubject(const std::string& subject) {
  return "<LocalSettings><Module Name=\"USER_ACT_MODULE_ID\">"
         "<Param Name=\"LOCAL_CERT_FOR_PM_SUBJECT\">" +
         subject + "</Param></Module></LocalSettings>\n";
}

class LegacyFiles : public testing_support::EachWay<ModuleTest> {
 protected:
  /// Runs the body in a process with an empty system directory.
  void withPrivateEtc(const std::function<void()>& body) {
    runInChild([&] {
      if (mounts()) {
        testing_support::enterPrivateMounts();
        testing_support::replaceSystemDirectory();
      } else {
        std::filesystem::create_directory(systemDirectory);
      }
      lead(SYSTEM_DIRECTORY, systemDirectory);
      body();
      std::filesystem::remove_all(systemDirectory);
    });
  }

  void expectImportOf(const std::string& subject) {
    EXPECT_TRUE(root().load(&log));
    EXPECT_THAT(log.reports, IsEmpty());
    EXPECT_EQ(root().POLICY->LOCAL_CERT_SUBJECT.value, subject);
    EXPECT_FALSE(exists(inVarDir));
    EXPECT_FALSE(exists(systemDirectory + "localsettings.xml"));
    EXPECT_FALSE(root().isChanged());
  }

  const std::string inVarDir = directory.path + "localsettings.xml";
  /// As the module names it, and where that leads.
  const std::string inSystemDirectory = std::string(SYSTEM_DIRECTORY) + "localsettings.xml";
  const std::string systemDirectory = mounts() ? SYSTEM_DIRECTORY : directory.path + "system/";
  testing_support::RecordingLoadLog log;
};

INSTANTIATE_EACH_WAY(LegacyFiles);

TEST_P(LegacyFiles, TheOneInTheSystemDirectoryAloneIsImportedAndDeleted) {
  withPrivateEtc([&] {
    writeFile(inSystemDirectory, documentWithSubject("system"));
    expectImportOf("system");
  });
}

TEST_P(LegacyFiles, TheOneInTheVariableDataDirectoryComesFirstAndBothAreDeleted) {
  withPrivateEtc([&] {
    writeFile(inVarDir, documentWithSubject("var"));
    writeFile(inSystemDirectory, documentWithSubject("system"));
    expectImportOf("var");
  });
}

TEST_P(LegacyFiles, AreDeletedInTheirOrder) {
  withPrivateEtc([&] {
    writeFile(inSystemDirectory, documentWithSubject("system"));
    const auto calls = callsDuring([&] { expectImportOf("system"); });
    std::vector<std::string> removals;
    std::copy_if(calls.begin(), calls.end(), std::back_inserter(removals),
                 [](auto& call) { return call.starts_with("remove "); });
    EXPECT_THAT(removals, ElementsAre("remove localsettings.xml", "remove " + inSystemDirectory));
  });
}

TEST_P(LegacyFiles, ThatAreNotWellFormedAreDeletedAndTheLoadSucceeds) {
  for (const std::string text : {"<LocalSettings><Module>", "no markup at all", "<a></b>", "<"}) {
    SCOPED_TRACE(text);
    withPrivateEtc([&] {
      writeFile(inVarDir, text);
      writeFile(inSystemDirectory, documentWithSubject("system"));
      expectImportOf("");
    });
  }
}

TEST_P(LegacyFiles, WithValuesBeforeTheFaultLoseThem) {
  withPrivateEtc([&] {
    // This parser looks at the whole document before it hands out anything.
    writeFile(inVarDir, documentWithSubject("lost") + "<LocalSettings>");
    expectImportOf("");
  });
}

TEST_P(LegacyFiles, AreLeftAloneWhenThereIsASettingsFile) {
  withPrivateEtc([&] {
    writeFile(settingsPath, "/ROOT=\nend=\n");
    writeFile(inVarDir, documentWithSubject("var"));
    writeFile(inSystemDirectory, documentWithSubject("system"));
    EXPECT_TRUE(root().load(&log));
    EXPECT_EQ(root().POLICY->LOCAL_CERT_SUBJECT.value, "");
    EXPECT_TRUE(exists(inVarDir));
    EXPECT_TRUE(exists(systemDirectory + "localsettings.xml"));
  });
}

TEST_P(LegacyFiles, AreImportedOnceAndWrittenOnlyAfterAFurtherChange) {
  withPrivateEtc([&] {
    writeFile(inSystemDirectory, documentWithSubject("system"));
    expectImportOf("system");
    EXPECT_TRUE(root().save(nullptr));
    EXPECT_FALSE(exists(settingsPath)) << "the snapshot equals the imported values";

    root().IKE->IKE_PORT.value = 501;
    EXPECT_TRUE(root().save(nullptr));
    EXPECT_THAT(readFile(settingsPath), testing::HasSubstr("LOCAL_CERT_SUBJECT=system\n"));
  });
}

}  // namespace
}  // namespace host
