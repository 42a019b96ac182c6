// Saves that fail: the text that says so, and what is left of the files.
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "tests/module/call_log.h"
#include "tests/module/child_process.h"
#include "tests/module/file_calls.h"
#include "tests/module/loaded_module.h"
#include "tests/module/lock_calls.h"
#include "tests/storage/writer_calls.h"
#include "tests/support/lock_probe.h"
#include "tests/support/private_mounts.h"

using testing::ElementsAre;
using testing::StartsWith;
using testing_support::EachWay;
using testing_support::enterPrivateMounts;
using testing_support::isLocked;
using testing_support::makeReadOnly;
using testing_support::mountEmpty;
using testing_support::mountOver;
using testing_support::unmount;

namespace host {
namespace {

/// What the stream library says of a stream that fails.
std::string streamFailure() {
  std::ofstream stream;
  stream.exceptions(std::ios::failbit);
  try {
    stream.open("/nonexistent/file");
  } catch (const std::exception& failure) {
    return failure.what();
  }
  return "the stream has not failed";
}

/// A settings file on disk, and a change that is not in it.
class WriterFailure : public ModuleTest {
 protected:
  void saveAndChange() {
    ASSERT_TRUE(root().save(nullptr));
    oldText = readFile(settingsPath);
    root().IKE->IKE_PORT.value = 1234;
  }

  std::vector<std::string> save() {
    return callsDuring([&] { result = root().save(&error); });
  }

  /// Three attempts, nothing removed or renamed, the old file and the snapshot as they were.
  void expectThatWritingFails() {
    EXPECT_THAT(save(), ElementsAre(CREATION, ATTEMPT, ATTEMPT, ATTEMPT));
    EXPECT_FALSE(result);
    EXPECT_EQ(error, "write failed: " + temporaryPath + ", error: " + streamFailure());
    EXPECT_EQ(readFile(settingsPath), oldText);
    EXPECT_EQ(root().rawSettings, oldText);
    EXPECT_TRUE(root().isChanged());
  }

  std::string oldText;
  std::string error;
  bool result = false;
};

TEST_F(WriterFailure, TheTemporaryFileIsADirectory) {
  saveAndChange();
  std::filesystem::create_directory(temporaryPath);
  const size_t descriptors = openDescriptors();
  expectThatWritingFails();
  EXPECT_EQ(openDescriptors(), descriptors);
  EXPECT_TRUE(std::filesystem::is_directory(temporaryPath));
}

TEST_F(WriterFailure, TheTemporaryFileLeadsToADeviceThatIsFull) {
  saveAndChange();
  std::filesystem::create_symlink("/dev/full", temporaryPath);
  const size_t descriptors = openDescriptors();
  expectThatWritingFails();
  EXPECT_EQ(openDescriptors(), descriptors);
}

TEST_F(WriterFailure, AFailureIsAppendedToTheCallersText) {
  saveAndChange();
  std::filesystem::create_directory(temporaryPath);
  error = "before ";
  save();
  EXPECT_THAT(error, StartsWith("before write failed: " + temporaryPath + ", error: "));
}

TEST_F(WriterFailure, HoldsNoLockAfterwardsWhateverHasFailed) {
  recordLocks();
  module.reload();
  saveAndChange();
  const auto expectNoLockAfterASaveThatFails = [&](const std::string& message) {
    SCOPED_TRACE(message);
    error.clear();
    save();
    EXPECT_FALSE(result);
    EXPECT_THAT(error, StartsWith(message));
    for (auto* lock : locksMade()) ASSERT_FALSE(isLocked(*lock));
  };
  std::filesystem::create_directory(temporaryPath);
  expectNoLockAfterASaveThatFails("write failed: ");
  std::filesystem::remove(temporaryPath);
  std::filesystem::create_symlink("/dev/full", temporaryPath);
  expectNoLockAfterASaveThatFails("write failed: ");
  std::filesystem::remove(temporaryPath);
  failNextRename(EIO);
  expectNoLockAfterASaveThatFails("rename failed: ");
  refuseWriting(EROFS);
  expectNoLockAfterASaveThatFails("write failed: ");
}

TEST_F(WriterFailure, HoldsNoLockWhenThereIsNoDirectory) {
  recordLocks();
  module.reload();
  platform().onVarDir = [] { throw std::runtime_error("no directory"); };
  EXPECT_THROW((void)root().save(&error), std::runtime_error);
  for (auto* lock : locksMade()) ASSERT_FALSE(isLocked(*lock));
  platform().onVarDir = nullptr;
  platform().varDir = directory.path + "missing/";
  EXPECT_FALSE(root().save(&error));
  for (auto* lock : locksMade()) ASSERT_FALSE(isLocked(*lock));
}

TEST_F(WriterFailure, NeedsNoTextToAppendTo) {
  saveAndChange();
  std::filesystem::create_directory(temporaryPath);
  EXPECT_FALSE(root().save(nullptr));
}

TEST_F(WriterFailure, ALaterSaveWorksOnceTheObstacleIsGone) {
  saveAndChange();
  std::filesystem::create_directory(temporaryPath);
  save();
  std::filesystem::remove(temporaryPath);
  error.clear();
  EXPECT_THAT(save(), ElementsAre(CREATION, ATTEMPT, REMOVAL, RENAMING));
  EXPECT_TRUE(result);
  EXPECT_EQ(error, "file: " + settingsPath);
}

TEST_F(WriterFailure, TheFileMayNotGrowAnyFurther) {
  runInChild([&] {
    saveAndChange();
    signal(SIGXFSZ, SIG_IGN);
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
    const rlim_t before = std::exchange(limit.rlim_cur, 100);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    save();
    limit.rlim_cur = before;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);

    EXPECT_FALSE(result);
    EXPECT_EQ(error, "write failed: " + temporaryPath + ", error: " + streamFailure());
    EXPECT_EQ(readFile(settingsPath), oldText);
    EXPECT_EQ(readFile(temporaryPath), root().rawSettings.substr(0, 100));
  });
}

using FileSystemFailure = EachWay<WriterFailure>;
INSTANTIATE_EACH_WAY(FileSystemFailure);

TEST_P(FileSystemFailure, ItIsFull) {
  runInChild([&] {
    if (mounts()) {
      enterPrivateMounts();
      mountEmpty(directory.path, "size=4k");  // the old file takes all of it
    }
    saveAndChange();
    if (!mounts()) lead(temporaryPath, "/dev/full");
    expectThatWritingFails();
  });
}

TEST_P(FileSystemFailure, ItIsReadOnly) {
  runInChild([&] {
    if (mounts()) {
      enterPrivateMounts();
      mountEmpty(directory.path);
    }
    saveAndChange();
    mounts() ? makeReadOnly(directory.path) : refuseWriting(EROFS);
    expectThatWritingFails();
    EXPECT_FALSE(exists(temporaryPath));
  });
}

TEST_F(WriterFailure, AFileThatCannotBeClosedIsMovedIntoPlaceAllTheSame) {
  saveAndChange();
  failNextClose();
  EXPECT_THAT(save(), ElementsAre(CREATION, ATTEMPT, REMOVAL, RENAMING));
  EXPECT_TRUE(result);
  EXPECT_EQ(error, "file: " + settingsPath);
}

TEST_F(WriterFailure, TheDirectoryIsMissing) {
  platform().varDir = directory.path + "missing/";
  save();
  EXPECT_FALSE(result);
  EXPECT_EQ(error, "write failed: " + directory.path +
                       "missing/localsettings.ini.bak, error: " + streamFailure());
}

// The rename fails after the old file has been removed.

class RenameFailure : public WriterFailure {
 protected:
  void expectThatRenamingFails() {
    EXPECT_THAT(save(), ElementsAre(CREATION, ATTEMPT, REMOVAL, RENAMING));
    EXPECT_FALSE(result);
    EXPECT_EQ(error, "rename failed: " + temporaryPath);
    EXPECT_FALSE(exists(settingsPath));
    EXPECT_THAT(readFile(temporaryPath), testing::HasSubstr("IKE_PORT=1234\n"));
    EXPECT_EQ(root().rawSettings, "");
    EXPECT_TRUE(root().isChanged());
  }

  void expectThatALaterSaveWorks() {
    error.clear();
    EXPECT_THAT(save(), ElementsAre(CREATION, ATTEMPT, REMOVAL, RENAMING));
    EXPECT_TRUE(result);
    EXPECT_EQ(error, "file: " + settingsPath);
    EXPECT_THAT(readFile(settingsPath), testing::HasSubstr("IKE_PORT=1234\n"));
    EXPECT_FALSE(exists(temporaryPath));
    EXPECT_FALSE(root().isChanged());
  }
};

TEST_F(RenameFailure, LeavesTheNewTextInTheTemporaryFileAndIsMadeGoodByALaterSave) {
  saveAndChange();
  failNextRename(EIO);
  expectThatRenamingFails();
  expectThatALaterSaveWorks();
}

TEST_F(RenameFailure, NeedsNoTextToAppendTo) {
  saveAndChange();
  failNextRename(EIO);
  EXPECT_FALSE(root().save(nullptr));
}

using MountPointFailure = EachWay<RenameFailure>;
INSTANTIATE_EACH_WAY(MountPointFailure);

TEST_P(MountPointFailure, TheTemporaryFileCannotBeRenamed) {
  runInChild([&] {
    saveAndChange();
    if (mounts()) {
      writeFile(directory.path + "elsewhere", "");
      writeFile(temporaryPath, "");
      enterPrivateMounts();
      mountOver(directory.path + "elsewhere", temporaryPath);
    } else {
      failNextRename(EBUSY);
    }
    expectThatRenamingFails();
    if (mounts()) unmount(temporaryPath);
    expectThatALaterSaveWorks();
  });
}

TEST_F(RenameFailure, HappensWhenTheSettingsFileIsADirectory) {
  std::filesystem::create_directories(settingsPath + "/inner");
  (void)callsDuring([&] { result = root().save(&error); });
  EXPECT_FALSE(result);
  EXPECT_EQ(error, "rename failed: " + temporaryPath);
  EXPECT_TRUE(exists(temporaryPath));
}

}  // namespace
}  // namespace host
