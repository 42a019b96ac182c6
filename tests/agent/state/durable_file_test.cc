#include "agent/state/durable_file.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <functional>
#include <system_error>

#include "tests/agent/state/scratch_directory.h"

namespace agent {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

class DurableFile : public testing::Test {
 protected:
  /// The message of the error, without the directory in front of the path.
  std::string errorOf(const std::function<void()>& action) const {
    try {
      action();
    } catch (const std::system_error& error) {
      const std::string message = error.what();
      if (!message.starts_with(directory_.path)) return "no path: " + message;
      return message.substr(directory_.path.size());
    }
    return "no error";
  }

  const agent_testing::ScratchDirectory directory_;
  const std::string file_ = directory_.at("file");
};

TEST_F(DurableFile, PlacesAPrivateFile) {
  const mode_t before = ::umask(0);
  replaceFileAtomically(file_, "text");
  (void)::umask(before);
  EXPECT_EQ(directory_.text("file"), "text");
  EXPECT_EQ(directory_.mode("file"), 0600u);
  EXPECT_THAT(directory_.names(), ElementsAre("file"));
}

TEST_F(DurableFile, ReplacesInOneStep) {
  directory_.write("file", "the old text");
  ASSERT_EQ(::link(file_.c_str(), directory_.at("old").c_str()), 0);
  directory_.write("file.new", "the long rest of an attempt that was cut short");
  replaceFileAtomically(file_, "new");
  EXPECT_EQ(directory_.text("file"), "new");
  EXPECT_EQ(directory_.text("old"), "the old text");  // not written over: another file
  EXPECT_THAT(directory_.names(), ElementsAre("file", "old"));
}

TEST_F(DurableFile, FollowsNoLink) {
  directory_.write("target", "untouched");
  std::filesystem::create_symlink("target", file_);
  EXPECT_EQ(errorOf([&] { (void)readFile(file_, 100); }),
            "/file cannot be opened: Too many levels of symbolic links");
  EXPECT_EQ(errorOf([&] { syncFile(file_); }),
            "/file cannot be opened: Too many levels of symbolic links");
  replaceFileAtomically(file_, "in the place of the link");
  EXPECT_EQ(directory_.text("file"), "in the place of the link");

  std::filesystem::create_symlink("target", directory_.at("file.new"));
  replaceFileAtomically(file_, "in the place of the link");
  EXPECT_EQ(directory_.text("target"), "untouched");
  EXPECT_EQ(directory_.text("file"), "in the place of the link");
}

TEST_F(DurableFile, KeepsTheOldFileWhenTheNewOneCannotBeWritten) {
  directory_.write("file", "the old text");
  const auto before = std::signal(SIGXFSZ, SIG_IGN);
  rlimit limit{};
  (void)::getrlimit(RLIMIT_FSIZE, &limit);
  const rlimit small{4, limit.rlim_max};
  (void)::setrlimit(RLIMIT_FSIZE, &small);
  const std::string place = errorOf([&] { replaceFileAtomically(file_, "the new text"); });
  const std::string keep =
      errorOf([&] { (void)writeNewFile(directory_.at("copy"), "the new text"); });
  (void)::setrlimit(RLIMIT_FSIZE, &limit);
  (void)std::signal(SIGXFSZ, before);

  EXPECT_EQ(place, "/file.new cannot be written: File too large");
  EXPECT_EQ(keep, "/copy cannot be written: File too large");
  EXPECT_THAT(directory_.contents(), ElementsAre("file: the old text"));
}

TEST_F(DurableFile, LeavesNoTemporaryWhereADirectoryIsInTheWay) {
  (void)::mkdir(file_.c_str(), 0700);
  EXPECT_EQ(errorOf([&] { replaceFileAtomically(file_, "text"); }),
            "/file cannot be replaced: Is a directory");
  EXPECT_THAT(directory_.names(), ElementsAre("file"));
}

TEST_F(DurableFile, MovesAsideWithoutOverwriting) {
  const std::string aside = directory_.at("aside");
  for (const char* text : {"first", "second", "third"}) {
    directory_.write("file", text);
    const std::string used = moveAside(file_, aside);
    EXPECT_THAT(used, StartsWith(aside));
  }
  EXPECT_THAT(directory_.contents(),
              ElementsAre("aside: first", "aside-2: second", "aside-3: third"));
}

TEST_F(DurableFile, KeepsCopiesWithoutOverwriting) {
  const std::string copy = directory_.at("copy");
  directory_.write("copy-2", "taken");
  EXPECT_EQ(writeNewFile(copy, "first"), copy);
  EXPECT_EQ(writeNewFile(copy, "third"), copy + "-3");
  EXPECT_EQ(writeNewFile(copy, ""), copy + "-4");
  EXPECT_THAT(directory_.contents(),
              ElementsAre("copy: first", "copy-2: taken", "copy-3: third", "copy-4: "));
  EXPECT_EQ(directory_.mode("copy"), 0600u);
}

TEST_F(DurableFile, IsMadeThroughANewFileWhateverHasItsName) {
  directory_.write("victim", "of a hard link");
  std::filesystem::create_hard_link(directory_.at("victim"), directory_.at("file.new"));
  replaceFileAtomically(file_, "first");
  std::filesystem::create_symlink("victim", directory_.at("file.new"));
  replaceFileAtomically(file_, "second");
  ASSERT_EQ(::mkfifo(directory_.at("file.new").c_str(), 0600), 0);
  replaceFileAtomically(file_, "third");
  directory_.write("file.new", "left by somebody");
  ASSERT_EQ(::chmod(directory_.at("file.new").c_str(), 0666), 0);
  replaceFileAtomically(file_, "fourth");
  EXPECT_EQ(directory_.mode("file"), 0600u);
  EXPECT_THAT(directory_.contents(), ElementsAre("file: fourth", "victim: of a hard link"));
}

TEST_F(DurableFile, ReadsUpToTheLimit) {
  directory_.write("file", "12345");
  const struct {
    size_t limit;
    const char* text;
  } rows[] = {{0, ""}, {1, "1"}, {4, "1234"}, {5, "12345"}, {6, "12345"}, {1 << 24, "12345"}};
  for (const auto& row : rows) EXPECT_EQ(readFile(file_, row.limit), row.text) << row.limit;
  EXPECT_EQ(readFile(directory_.at("absent"), 100), std::nullopt);
}

TEST_F(DurableFile, ReadsTheBeginningOfAHugeFile) {
  directory_.write("file", "12345");
  ASSERT_EQ(::truncate(file_.c_str(), off_t{3} << 30), 0);
  EXPECT_EQ(readFile(file_, 4), "1234");
}

TEST_F(DurableFile, ReadsNothingButRegularFiles) {
  (void)::mkdir(directory_.at("directory").c_str(), 0700);
  (void)::mkfifo(directory_.at("fifo").c_str(), 0600);
  for (const std::string name : {"directory", "fifo"}) {
    EXPECT_EQ(errorOf([&] { (void)readFile(directory_.at(name), 100); }),
              "/" + name + " cannot be used: it is not a regular file: Invalid argument");
  }
}

TEST_F(DurableFile, EveryErrorNamesThePath) {
  directory_.write("file", "text");
  const std::string below = file_ + "/below";
  const std::string absent = directory_.at("absent");
  const std::string inAbsent = absent + "/x";
  const struct {
    std::function<void()> action;
    const char* message;
  } rows[] = {
      {[&] { (void)readFile(below, 1); }, "/file/below cannot be opened: Not a directory"},
      {[&] { replaceFileAtomically(below, ""); },
       "/file/below.new cannot be created: Not a directory"},
      {[&] { replaceFileAtomically(inAbsent, ""); },
       "/absent/x.new cannot be created: No such file or directory"},
      {[&] { (void)writeNewFile(below, ""); }, "/file/below cannot be created: Not a directory"},
      {[&] { (void)moveAside(absent, file_); },
       "/absent cannot be moved aside: No such file or directory"},
      {[&] { syncFile(absent); }, "/absent cannot be opened: No such file or directory"},
  };
  for (const auto& row : rows) EXPECT_EQ(errorOf(row.action), row.message);
  EXPECT_THAT(directory_.contents(), ElementsAre("file: text"));
}

TEST_F(DurableFile, NamesAsideTellWhatAndWhen) {
  EXPECT_THAT(nameAside("/state/file", "damaged"),
              testing::MatchesRegex("/state/file\\.damaged-20[0-9]{6}T[0-9]{6}Z"));
}

}  // namespace
}  // namespace agent
