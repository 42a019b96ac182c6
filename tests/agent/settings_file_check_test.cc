#include "agent/settings_file_check.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <stdexcept>
#include <string>

#include "tests/agent/another_user.h"
#include "tests/module/child_process.h"
#include "tests/module/temp_directory.h"
#include "tests/support/readable_bytes.h"

namespace agent {
namespace {

using testing_support::inQuotes;

class SettingsFileCheck : public testing::Test {
 protected:
  /// Why the file is refused; empty if it is taken.
  std::string refusal() const { return refusalOf(path); }

  static std::string refusalOf(const std::string& path) {
    try {
      checkSettingsFile(path);
      return "";
    } catch (const std::runtime_error& error) {
      return error.what();
    }
  }

  std::string refused(const std::string& reason) const {
    return "settings file " + path + " " + reason;
  }

  const host::TempDirectory directory;
  const std::string path = directory.path + "localsettings.ini";
};

TEST_F(SettingsFileCheck, TakesAFileThatIsNotThere) { EXPECT_EQ(refusal(), ""); }

TEST_F(SettingsFileCheck, TakesEveryFileInWhichTheModuleFindsAKey) {
  for (const char* text : {"/ROOT=\nend=\n", "\xEF\xBB\xBF/ROOT=\nend=\n", "x", "\n", " =", "=x",
                           "==\n", "====x", "\xEF\xBB\xBF=x", "\xEF\xBB", "\xEF\xBB\xBE=",
                           "=\xEF\xBB\xBF", "\xEF\xBB\xBF\xEF\xBB\xBF", "no settings at all"}) {
    host::writeFile(path, text);
    EXPECT_EQ(refusal(), "") << inQuotes(text);
  }
  host::writeFile(path, std::string("\0", 1));
  EXPECT_EQ(refusal(), "");
}

TEST_F(SettingsFileCheck, RefusesAnEmptyFile) {
  host::writeFile(path, "");
  EXPECT_EQ(refusal(), refused("is empty; restore it, or remove it to start with the defaults"));
}

TEST_F(SettingsFileCheck, RefusesAFileThatTheModuleWouldReadForEver) {
  for (const std::string& text : {std::string("="), std::string("=="), std::string("==="),
                                  std::string(100'000, '='), std::string("\xEF\xBB\xBF"),
                                  std::string("\xEF\xBB\xBF="), std::string("\xEF\xBB\xBF===")}) {
    host::writeFile(path, text);
    EXPECT_EQ(refusal(),
              refused("holds no settings; restore it, or remove it to start with the defaults"))
        << inQuotes(text.substr(0, 10));
  }
}

TEST_F(SettingsFileCheck, RefusesADirectory) {
  std::filesystem::create_directory(path);
  EXPECT_EQ(refusal(), refused("is not a regular file"));
}

TEST_F(SettingsFileCheck, RefusesAPipeWithoutOpeningIt) {
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  EXPECT_EQ(refusal(), refused("is not a regular file"));
}

TEST_F(SettingsFileCheck, RefusesALinkWhateverItLeadsTo) {
  const std::string target = directory.path + "target";
  std::filesystem::create_symlink(target, path);
  EXPECT_EQ(refusal(), refused("is not a regular file"));
  host::writeFile(target, "/ROOT=\nend=\n");
  EXPECT_EQ(refusal(), refused("is not a regular file"));
}

TEST_F(SettingsFileCheck, RefusesADevice) {
  EXPECT_EQ(refusalOf("/dev/null"), "settings file /dev/null is not a regular file");
}

TEST_F(SettingsFileCheck, TellsWhyAPathCannotBeExamined) {
  host::writeFile(path, "/ROOT=\nend=\n");
  EXPECT_EQ(refusalOf(path + "/below"),
            "settings file " + path + "/below cannot be examined: Not a directory");
}

TEST_F(SettingsFileCheck, RefusesAFileThatTheAgentsUserCannotRead) {
  host::writeFile(path, "/ROOT=\nend=\n");
  ASSERT_EQ(chmod(path.c_str(), 0000), 0);
  ASSERT_EQ(chmod(directory.path.c_str(), 0755), 0);
  host::runInChild([this] {
    agent_testing::dropRights();
    EXPECT_EQ(refusal(), refused("cannot be opened: Permission denied"));
  });
}

}  // namespace
}  // namespace agent
