#include "agent/state/state_directory.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <optional>

#include "agent/base/start_failure.h"
#include "tests/agent/state/scratch_directory.h"
#include "tests/support/another_user.h"

namespace agent {
namespace {

/// What keeps the directory from being used; empty if it can be. Expects the exit status that goes
/// with it.
std::string refusalOf(const std::string& path, int exitStatus = EXIT_BAD_FILE) {
  try {
    const StateDirectory directory(path);
    return {};
  } catch (const StartFailure& failure) {
    EXPECT_EQ(failure.exitStatus, exitStatus);
    return failure.what();
  }
}

class StateDirectoryTest : public testing::Test {
 protected:
  const agent_testing::ScratchDirectory scratch_;
  const std::string& path_ = scratch_.path;
};

TEST_F(StateDirectoryTest, NamesWhatMayLieInIt) {
  const StateDirectory directory(path_ + "//");
  EXPECT_EQ(directory.path(), path_);
  EXPECT_EQ(directory.settings(), path_ + "/localsettings.ini");
  EXPECT_EQ(directory.backup(), path_ + "/localsettings.ini.bak");
  EXPECT_EQ(directory.shadowCopy(), path_ + "/localsettings.ini.good");
  EXPECT_EQ(directory.legacy(), path_ + "/localsettings.xml");
  EXPECT_EQ(directory.importing(), path_ + "/localsettings.xml.importing");
}

TEST_F(StateDirectoryTest, Modes) {
  const std::string refusal =
      "state directory " + path_ + " can be written to by other users; mode 0700 would be right";
  const struct {
    mode_t mode;
    bool refused;
  } rows[] = {{0700, false}, {0750, false}, {0755, false}, {01755, false},
              {0720, true},  {0702, true},  {0777, true},  {01777, true}};
  for (const auto& row : rows) {
    (void)::chmod(path_.c_str(), row.mode);
    EXPECT_EQ(refusalOf(path_), row.refused ? refusal : "") << std::oct << row.mode;
  }
}

TEST_F(StateDirectoryTest, MayBeChangedAfter2038) {
  const timespec in2100{4102444800, 0};
  const timespec times[] = {in2100, in2100};
  ASSERT_EQ(::utimensat(AT_FDCWD, path_.c_str(), times, 0), 0);
  EXPECT_EQ(refusalOf(path_), "");
}

TEST_F(StateDirectoryTest, MustBeADirectory) {
  scratch_.write("file", "");
  EXPECT_EQ(refusalOf(path_ + "/absent"),
            "state directory " + path_ + "/absent cannot be used: No such file or directory");
  EXPECT_EQ(refusalOf(path_ + "/file"), "state directory " + path_ + "/file is not a directory");
  EXPECT_EQ(refusalOf(path_ + "/file/below"),
            "state directory " + path_ + "/file/below cannot be used: Not a directory");
}

TEST_F(StateDirectoryTest, MustBelongToTheAgentsUser) {
  const auto foreign = testing_support::foreignDirectory(path_);
  if (!foreign) GTEST_SKIP() << "every directory belongs to this user here";
  EXPECT_EQ(refusalOf(foreign->path), "state directory " + foreign->path + " belongs to user " +
                                          std::to_string(foreign->owner) +
                                          ", not to the agent's user " +
                                          std::to_string(::geteuid()));
  EXPECT_TRUE(scratch_.names().empty());
}

TEST_F(StateDirectoryTest, HasOneHolder) {
  std::optional<StateDirectory> first(path_);
  EXPECT_EQ(refusalOf(path_, EXIT_TRY_AGAIN),
            "state directory " + path_ + " is in use by another agent");
  first.reset();
  EXPECT_EQ(refusalOf(path_), "");
}

TEST_F(StateDirectoryTest, HasOneHolderAmongProcesses) {
  const StateDirectory held(path_);
  const std::string expected = "state directory " + path_ + " is in use by another agent";
  const pid_t child = ::fork();
  if (child == 0) ::_exit(refusalOf(path_, EXIT_TRY_AGAIN) == expected ? 0 : 1);
  int status = -1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}

TEST_F(StateDirectoryTest, NeedsNoFileForItsLock) {
  const StateDirectory directory(path_);
  EXPECT_TRUE(scratch_.names().empty());
}

TEST_F(StateDirectoryTest, ALinkIsFollowedOnce) {
  const agent_testing::ScratchDirectory other;
  std::filesystem::create_directory_symlink(path_, other.at("link"));
  const StateDirectory directory(other.at("link"));
  EXPECT_EQ(directory.path(), path_);
  other.remove("link");
  EXPECT_EQ(refusalOf(path_, EXIT_TRY_AGAIN),
            "state directory " + path_ + " is in use by another agent");
  std::filesystem::create_directory_symlink(other.at("nowhere"), other.at("broken"));
  EXPECT_EQ(refusalOf(other.at("broken")),
            "state directory " + other.at("broken") + " cannot be used: No such file or directory");
}

}  // namespace
}  // namespace agent
