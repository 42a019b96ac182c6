// Saves that fail half-way: the old settings or the new ones stay, and the next save makes good.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <thread>

#include "tests/agent/state/kept_settings.h"

namespace agent {
namespace {

using agent_testing::BACKUP;
using agent_testing::exampleSettings;
using agent_testing::KeptSettings;
using agent_testing::SETTINGS;
using agent_testing::TWIN;
using testing::HasSubstr;
using testing::StartsWith;

class FailedSave : public testing::Test {
 protected:
  FailedSave() {
    directory_.write(SETTINGS, exampleSettings());
    settings_.emplace(directory_);
    settings_->setPort(501);
  }

  void makeDirectory(const std::string& name) {
    ASSERT_EQ(::mkdir(directory_.at(name).c_str(), 0700), 0);
  }

  void expectSuccessNow() {
    EXPECT_EQ(settings_->keeper().save(false), "");
    EXPECT_EQ(directory_.text(SETTINGS), exampleSettings(501));
    EXPECT_EQ(directory_.text(TWIN), exampleSettings(501));
    EXPECT_FALSE(settings_->server().isChanged());
  }

  const agent_testing::ScratchDirectory directory_;
  std::optional<KeptSettings> settings_;
};

TEST_F(FailedSave, OfTheTwin) {
  makeDirectory("localsettings.ini.good.new");
  EXPECT_THAT(settings_->keeper().save(false),
              StartsWith(directory_.at("localsettings.ini.good.new") + " cannot be created: "));
  EXPECT_EQ(directory_.text(SETTINGS), exampleSettings());
  EXPECT_EQ(directory_.text(TWIN), exampleSettings());
  EXPECT_TRUE(settings_->server().isChanged());

  directory_.remove("localsettings.ini.good.new");
  expectSuccessNow();
}

TEST_F(FailedSave, OfTheModule) {
  makeDirectory(BACKUP);
  const std::string failure = settings_->keeper().save(false);
  EXPECT_THAT(failure, StartsWith("write failed: " + directory_.at(BACKUP) + ", error: "));
  EXPECT_EQ(settings_->keeper().state().lastFailure, failure);
  EXPECT_EQ(settings_->keeper().state().lastSave, std::nullopt);
  EXPECT_EQ(directory_.text(SETTINGS), exampleSettings());
  EXPECT_EQ(directory_.text(TWIN), exampleSettings(501));  // placed before: the new ones are safe

  directory_.remove(BACKUP);
  expectSuccessNow();
}

TEST_F(FailedSave, OfTheReadBack) {
  // The module writes through the link, and then gives the link itself the settings' name.
  std::filesystem::create_symlink("elsewhere", directory_.at(BACKUP));
  const std::string failure = settings_->keeper().save(false);
  EXPECT_EQ(failure,
            directory_.at(SETTINGS) + " cannot be opened: Too many levels of symbolic links");
  EXPECT_EQ(directory_.text(TWIN), exampleSettings(501));
  EXPECT_TRUE(settings_->server().isChanged());
  EXPECT_EQ(settings_->keeper().save(true), failure);  // still no file of ours

  directory_.remove(SETTINGS);
  EXPECT_EQ(settings_->keeper().save(true), "");
  expectSuccessNow();
}

/// Opens a FIFO for reading as soon as somebody writes to it, and takes what is written.
void drain(const std::string& path) {
  const int fifo = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  char buffer[4096];
  while (::read(fifo, buffer, sizeof buffer) > 0) continue;
  (void)::close(fifo);
}

TEST_F(FailedSave, TheStateCanBeAskedForMeanwhile) {
  ASSERT_EQ(::mkfifo(directory_.at(BACKUP).c_str(), 0600), 0);
  std::string failure;
  std::thread saving([&] { failure = settings_->keeper().save(false); });
  // From here on the save waits for a reader of the FIFO, in the module.
  while (directory_.text(TWIN) != exampleSettings(501)) std::this_thread::yield();
  EXPECT_EQ(settings_->keeper().state().lastFailure, "");

  drain(directory_.at(BACKUP));
  saving.join();
  EXPECT_THAT(failure, HasSubstr("it is not a regular file"));
  EXPECT_EQ(settings_->keeper().state().lastFailure, failure);
}

}  // namespace
}  // namespace agent
