// Saves that fail half-way: the old settings or the new ones stay, and the next save makes good.
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <future>
#include <new>
#include <thread>

#include "tests/agent/state/kept_settings.h"
#include "tests/agent/state/rename_hook.h"
#include "tests/module/failing_allocation.h"

namespace agent {
namespace {

using agent_testing::BACKUP;
using agent_testing::exampleSettings;
using agent_testing::HookedRename;
using agent_testing::KeptSettings;
using agent_testing::renameReally;
using agent_testing::SETTINGS;
using agent_testing::SHADOW_COPY;
using testing::StartsWith;

class FailedSave : public testing::Test {
 protected:
  FailedSave() {
    directory_.write(SETTINGS, exampleSettings());
    settings_.emplace(directory_);
    settings_->setPort(501);
  }

  /// A hook that lets the rename to this file fail, and others happen.
  agent_testing::RenameHook failing(const std::string& name) {
    return [target = directory_.at(name)](const std::string& from, const std::string& to) {
      if (to != target) return renameReally(from, to);
      errno = EIO;
      return -1;
    };
  }

  void expectSuccessNow() {
    EXPECT_EQ(settings_->keeper().save(false), "");
    EXPECT_EQ(directory_.text(SETTINGS), exampleSettings(501));
    EXPECT_EQ(agent_testing::shadowCopyOf(directory_), exampleSettings(501));
    EXPECT_FALSE(settings_->server().isChanged());
    EXPECT_EQ(settings_->keeper().state().lastFailure, "");
  }

  const agent_testing::ScratchDirectory directory_;
  std::optional<KeptSettings> settings_;
};

// The file may be written already when the memory for the rest of the save is missing.
TEST_F(FailedSave, ByEachAllocationInTurn) {
  unsigned short port = 501;
  for (int number = 1; number < 100'000; ++number) {
    host::failAllocation(number);
    std::string failure;
    try {
      failure = settings_->keeper().save(false);
    } catch (const std::bad_alloc&) {
      failure = "no memory";
    }
    const bool failed = host::allocationHasFailed();
    host::failAllocation(0);
    ASSERT_EQ(settings_->keeper().save(false), "") << "after allocation " << number;
    ASSERT_EQ(directory_.text(SETTINGS), exampleSettings(port));
    if (!failed) {
      EXPECT_EQ(failure, "");
      EXPECT_GT(number, 100);
      return;
    }
    port = static_cast<unsigned short>(501 + number % 100);
    settings_->setPort(port);
  }
  FAIL() << "a save that never ends";
}

TEST_F(FailedSave, BeforeTheShadowCopy) {
  const std::string temporary = directory_.at("localsettings.ini.good.new");
  ASSERT_EQ(::mkdir(temporary.c_str(), 0700), 0);
  EXPECT_EQ(settings_->keeper().save(false), temporary + " cannot be created: File exists");
  EXPECT_EQ(directory_.text(SETTINGS), exampleSettings());
  EXPECT_EQ(agent_testing::shadowCopyOf(directory_), exampleSettings());
  EXPECT_TRUE(settings_->server().isChanged());

  directory_.remove("localsettings.ini.good.new");
  expectSuccessNow();
}

TEST_F(FailedSave, AtTheShadowCopy) {
  {
    const HookedRename hooked(failing(SHADOW_COPY));
    EXPECT_EQ(settings_->keeper().save(false),
              directory_.at(SHADOW_COPY) + " cannot be replaced: Input/output error");
  }
  EXPECT_EQ(directory_.text(SETTINGS), exampleSettings());
  EXPECT_EQ(agent_testing::shadowCopyOf(directory_), exampleSettings());
  expectSuccessNow();
}

TEST_F(FailedSave, AtTheModulesRename) {
  {
    const HookedRename hooked(failing(SETTINGS));
    const std::string failure = settings_->keeper().save(false);
    EXPECT_EQ(failure, "rename failed: " + directory_.at(BACKUP));
    EXPECT_EQ(settings_->keeper().state().lastFailure, failure);
    EXPECT_EQ(settings_->keeper().state().lastSave, std::nullopt);
  }
  EXPECT_EQ(directory_.text(SETTINGS), "(absent)");  // the module has removed it
  EXPECT_EQ(agent_testing::shadowCopyOf(directory_), exampleSettings(501));
  expectSuccessNow();  // the agent knows why the file is missing
}

TEST_F(FailedSave, OfTheModulesText) {
  settings_->setPort(500);
  directory_.remove(SETTINGS);  // so that the shadow copy holds the text already and is not written
  const auto before = std::signal(SIGXFSZ, SIG_IGN);
  rlimit limit{};
  (void)::getrlimit(RLIMIT_FSIZE, &limit);
  const rlimit small{2000, limit.rlim_max};
  (void)::setrlimit(RLIMIT_FSIZE, &small);
  const std::string failure = settings_->keeper().save(true);
  (void)::setrlimit(RLIMIT_FSIZE, &limit);
  (void)std::signal(SIGXFSZ, before);
  EXPECT_THAT(failure, StartsWith("write failed: " + directory_.at(BACKUP) + ", error: "));
  EXPECT_EQ(agent_testing::shadowCopyOf(directory_), exampleSettings());

  settings_->setPort(501);
  expectSuccessNow();
}

TEST_F(FailedSave, AtTheReadBack) {
  const std::string settings = directory_.at(SETTINGS);
  {
    const HookedRename hooked([&](const std::string& from, const std::string& to) {
      const int result = renameReally(from, to);
      if (to == settings) directory_.write(SETTINGS, "not what the module has written");
      return result;
    });
    EXPECT_EQ(settings_->keeper().save(false), settings + " does not hold what was written to it");
  }
  EXPECT_EQ(agent_testing::shadowCopyOf(directory_), exampleSettings(501));
  EXPECT_TRUE(settings_->server().isChanged());
  expectSuccessNow();
}

// One of them may be all that there is.
TEST_F(FailedSave, ForgetsNoCopy) {
  const auto copies = [this] {
    return std::ranges::count_if(directory_.names(), [](const std::string& name) {
      return name.find(".edited-") != name.npos;
    });
  };
  for (int number = 1; number <= 25; ++number) {
    directory_.write("localsettings.ini.edited-20261101T0000" + std::to_string(10 + number) + "Z",
                     std::to_string(number));
  }
  {
    const HookedRename hooked(failing(SETTINGS));
    EXPECT_NE(settings_->keeper().save(false), "");
  }
  EXPECT_EQ(copies(), 25);
  expectSuccessNow();
  EXPECT_EQ(copies(), 20);
}

TEST_F(FailedSave, TheStateCanBeAskedForMeanwhile) {
  std::promise<void> reached;
  std::promise<void> asked;
  const HookedRename hooked([&](const std::string& from, const std::string& to) {
    if (to == directory_.at(SETTINGS)) {
      reached.set_value();
      asked.get_future().wait();
    }
    return renameReally(from, to);
  });
  std::thread saving([&] { EXPECT_EQ(settings_->keeper().save(false), ""); });
  reached.get_future().wait();  // the save is in the module now
  EXPECT_EQ(settings_->keeper().state().lastSave, std::nullopt);
  asked.set_value();
  saving.join();
  EXPECT_NE(settings_->keeper().state().lastSave, std::nullopt);
}

}  // namespace
}  // namespace agent
