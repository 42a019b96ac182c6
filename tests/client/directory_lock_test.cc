// The lock of a directory, as others see it.
#include "client/directory_lock.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <iterator>

#include "client/failure.h"
#include "client/file_store.h"
#include "inspection/settings_text.h"
#include "tests/agent/state/scratch_directory.h"

namespace client {
namespace {

/// The directory, opened by somebody else.
class Other {
 public:
  explicit Other(const std::string& directory)
      : descriptor_(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {}
  ~Other() { (void)::close(descriptor_); }
  Other(const Other&) = delete;
  Other& operator=(const Other&) = delete;

  bool takes(int kind) const { return ::flock(descriptor_, kind | LOCK_NB) == 0; }

 private:
  const int descriptor_;
};

std::ptrdiff_t openDescriptors() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

class DirectoryLockTest : public testing::Test {
 protected:
  DirectoryLockTest() { directory_.write("file", inspection::textOf(defaults_)); }

  const agent_testing::ScratchDirectory directory_;
  LPARAMS::Server::Catalogue defaults_;
  const std::string file_ = directory_.at("file");
};

TEST_F(DirectoryLockTest, KeepsOthersOutAsLongAsItIsThere) {
  {
    const DirectoryLock lock(file_, DirectoryLock::Shared, "wait");
    EXPECT_TRUE(Other(directory_.path).takes(LOCK_SH));
    EXPECT_FALSE(Other(directory_.path).takes(LOCK_EX));
  }
  {
    const DirectoryLock lock(file_, DirectoryLock::Alone, "wait");
    EXPECT_FALSE(Other(directory_.path).takes(LOCK_SH));
  }
  EXPECT_TRUE(Other(directory_.path).takes(LOCK_EX));
}

TEST_F(DirectoryLockTest, ThatCannotBeTakenLeavesNothingOpen) {
  const Other other(directory_.path);
  ASSERT_TRUE(other.takes(LOCK_EX));
  const auto before = openDescriptors();
  EXPECT_THROW(DirectoryLock(file_, DirectoryLock::Shared, "wait"), Failure);
  EXPECT_EQ(openDescriptors(), before);
}

TEST_F(DirectoryLockTest, IsTakenForAWriteToo) {
  FileStore store(file_);
  const Other other(directory_.path);  // an agent that has started meanwhile
  ASSERT_TRUE(other.takes(LOCK_EX));
  const bridge::NamedChanges changes{{}, {{bridge::Change::Set, "IKE.IKE_PORT", "501"}}};
  try {
    (void)store.set(changes);
    FAIL() << "it is written";
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.status, programs::EXIT_TRY_AGAIN);
  }
  EXPECT_EQ(directory_.text("file"), inspection::textOf(defaults_));
}

}  // namespace
}  // namespace client
