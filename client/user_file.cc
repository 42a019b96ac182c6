#include "client/user_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <system_error>

#include "client/failure.h"
#include "text/escape.h"

namespace client {
namespace {

constexpr const char* STANDARD_INPUT = "-";

[[noreturn]] void fail(const char* what, const std::string& path) {
  const int reason = errno;
  throw Failure(programs::EXIT_IO, std::string("cannot ") + what + " " + text::escaped(path) +
                                       ": " + std::generic_category().message(reason));
}

/// A descriptor that is closed at the end of its scope.
class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() {
    if (number_ >= 0) (void)::close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  operator int() const { return number_; }

 private:
  const int number_;
};

/// A file beside the one that it is to replace. It is removed unless it has.
class Replacement {
 public:
  explicit Replacement(const std::string& path)
      : path_(path), name_(path + ".XXXXXX"), file_(::mkostemp(name_.data(), O_CLOEXEC)) {
    if (file_ < 0) fail("write beside", path_);
  }
  ~Replacement() {
    if (!done_) (void)::unlink(name_.c_str());
  }
  Replacement(const Replacement&) = delete;
  Replacement& operator=(const Replacement&) = delete;

  void takeOwnerAndMode(const struct stat& former) {
    const bool isOwn = former.st_uid == ::geteuid() && former.st_gid == ::getegid();
    if (!isOwn && ::fchown(file_, former.st_uid, former.st_gid) != 0) {
      fail("keep the owner of", path_);
    }
    if (::fchmod(file_, former.st_mode & 07777) != 0) fail("keep the mode of", path_);
  }

  void write(std::string_view text) {
    while (!text.empty()) {
      const ssize_t written = ::write(file_, text.data(), text.size());
      if (written < 0 && errno != EINTR) fail("write", path_);
      if (written > 0) text.remove_prefix(static_cast<size_t>(written));
    }
    if (::fsync(file_) != 0) fail("write", path_);
  }

  void putInPlace() {
    if (std::rename(name_.c_str(), path_.c_str()) != 0) fail("replace", path_);
    done_ = true;
    syncDirectory();
  }

  /// Returns false if there is something of the name.
  bool putInEmptyPlace() {
    if (::renameat2(AT_FDCWD, name_.c_str(), AT_FDCWD, path_.c_str(), RENAME_NOREPLACE) == 0) {
      done_ = true;
    } else if (errno != EINVAL || ::link(name_.c_str(), path_.c_str()) != 0) {
      // Some file systems of other machines know links, and not the flag.
      if (errno == EEXIST) return false;
      fail("write", path_);
    }
    syncDirectory();
    return true;
  }

 private:
  void syncDirectory() const {
    const std::string directory = std::filesystem::path(path_).parent_path().string();
    const Descriptor opened(
        ::open(directory.empty() ? "." : directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened < 0 || ::fsync(opened) != 0) fail("make durable", path_);
  }

  const std::string& path_;
  std::string name_;
  const Descriptor file_;
  bool done_ = false;
};

/// All that can be read from it.
std::string readWhole(int file, const std::string& path, size_t limit) {
  std::string text;
  for (;;) {
    char chunk[64 * 1024];
    const ssize_t got = ::read(file, chunk, sizeof chunk);
    if (got < 0 && errno != EINTR) fail("read", path);
    if (got == 0) return text;
    if (got > 0) text.append(chunk, static_cast<size_t>(got));
    if (text.size() > limit) {
      throw Failure(programs::EXIT_BAD_FILE,
                    text::escaped(path) + " is larger than " + std::to_string(limit) + " bytes");
    }
  }
}

/// Where the path's links lead to; the path itself if there is nothing yet.
std::string resolved(const std::string& path) {
  std::error_code missing;
  const auto found = std::filesystem::canonical(path, missing);
  return missing ? path : found.string();
}

}  // namespace

std::string readUserFile(const std::string& path, size_t limit) {
  const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (file < 0) fail("read", path);
  return readWhole(file, path, limit);
}

std::string readUserInput(const std::string& path, size_t limit) {
  if (path != STANDARD_INPUT) return readUserFile(path, limit);
  return readWhole(STDIN_FILENO, inputName(path), limit);
}

std::vector<std::string> configurationFiles(const std::string& path) {
  std::error_code error;
  if (path == STANDARD_INPUT || !std::filesystem::is_directory(path, error)) return {path};
  std::vector<std::string> files;
  for (std::filesystem::directory_iterator entry(path, error), end; !error && entry != end;
       entry.increment(error)) {
    const std::filesystem::path& file = entry->path();
    if (file.extension() == ".conf" && !file.filename().native().starts_with('.')) {
      files.push_back(file.string());
    }
  }
  if (error) {
    errno = error.value();
    fail("read", path);
  }
  std::ranges::sort(files);
  return files;
}

std::string inputName(const std::string& path) {
  return path == STANDARD_INPUT ? "the standard input" : path;
}

void replaceUserFile(const std::string& path, std::string_view text) {
  const std::string target = resolved(path);
  struct stat former {};
  const bool isThere = ::stat(target.c_str(), &former) == 0;
  if (isThere && !S_ISREG(former.st_mode)) {
    throw Failure(programs::EXIT_IO, text::escaped(path) + " is not a regular file");
  }
  Replacement file(target);
  if (isThere) file.takeOwnerAndMode(former);
  file.write(text);
  file.putInPlace();
}

void writePrivateFile(const std::string& path, std::string_view text, Existing existing) {
  struct stat former {};
  const bool isThere = ::lstat(path.c_str(), &former) == 0;
  if (isThere && !S_ISREG(former.st_mode)) {
    throw Failure(programs::EXIT_IO, text::escaped(path) + " is not a regular file");
  }
  Replacement file(path);
  file.write(text);
  if (existing == Existing::Replaced) return file.putInPlace();
  if (!file.putInEmptyPlace()) {
    throw Failure(programs::EXIT_IO, text::escaped(path) + " exists; --force replaces it");
  }
}

}  // namespace client
