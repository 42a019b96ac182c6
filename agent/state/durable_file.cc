#include "agent/state/durable_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <system_error>
#include <utility>

namespace agent {
namespace {

constexpr mode_t FILE_MODE = 0600;
constexpr const char* TEMPORARY_SUFFIX = ".new";

[[noreturn]] void fail(const std::string& path, const char* what, int reason = errno) {
  throw std::system_error(reason, std::generic_category(), path + " cannot be " + what);
}

/// A descriptor that is closed at the end of its scope.
class File {
 public:
  File(const std::string& path, int flags)
      : path_(path), descriptor_(::open(path.c_str(), flags | O_CLOEXEC | O_NOFOLLOW, FILE_MODE)) {}
  ~File() {
    if (isOpen()) (void)::close(descriptor_);
  }
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  bool isOpen() const { return descriptor_ >= 0; }
  int descriptor() const { return descriptor_; }

  void write(std::string_view text) {
    while (!text.empty()) {
      const ssize_t written = ::write(descriptor_, text.data(), text.size());
      if (written < 0 && errno != EINTR) fail(path_, "written");
      if (written > 0) text.remove_prefix(static_cast<size_t>(written));
    }
  }

  void sync() {
    if (::fsync(descriptor_) != 0) fail(path_, "synced");
  }

  void close() {
    if (::close(std::exchange(descriptor_, -1)) != 0) fail(path_, "closed");
  }

 private:
  const std::string& path_;
  int descriptor_;
};

void syncDirectoryOf(const std::string& path) {
  const std::string directory = std::filesystem::path(path).parent_path().string();
  File file(directory, O_RDONLY | O_DIRECTORY);
  if (!file.isOpen()) fail(directory, "opened");
  file.sync();
}

/// Makes a new file, which `fill` writes. One that could not be written to its end is removed: it
/// would only take up a full disk.
template <typename Fill>
void makeDurably(const std::string& path, Fill fill) {
  File file(path, O_WRONLY | O_CREAT | O_EXCL);
  if (!file.isOpen()) fail(path, "created");
  try {
    fill(file);
    file.sync();
    file.close();
  } catch (const std::system_error&) {
    (void)::unlink(path.c_str());
    throw;
  }
}

void writeDurably(const std::string& path, std::string_view text) {
  makeDurably(path, [&](File& file) { file.write(text); });
}

/// Renames a file that `make` makes over the one at the path.
template <typename Make>
void replaceAtomically(const std::string& path, Make make) {
  const std::string temporary = path + TEMPORARY_SUFFIX;
  // Whatever has the name, a hard link or a pipe, is not to be written to; nor is its mode kept.
  (void)::unlink(temporary.c_str());
  make(temporary);
  if (std::rename(temporary.c_str(), path.c_str()) != 0) {
    const int reason = errno;
    (void)::unlink(temporary.c_str());
    fail(path, "replaced", reason);
  }
  syncDirectoryOf(path);
}

void requireRegularFile(const std::string& path, const File& file, struct stat& status) {
  if (::fstat(file.descriptor(), &status) != 0) fail(path, "examined");
  if (!S_ISREG(status.st_mode)) fail(path, "used: it is not a regular file", EINVAL);
}

/// Calls `attempt` with one name after the other until it does not say that the name is taken.
template <typename Attempt>
std::string firstFree(const std::string& name, Attempt attempt) {
  std::string candidate = name;
  for (int number = 2; !attempt(candidate); ++number) {
    candidate = name + "-" + std::to_string(number);
  }
  return candidate;
}

}  // namespace

std::optional<std::string> readFile(const std::string& path, size_t limit) {
  File file(path, O_RDONLY | O_NONBLOCK);
  if (!file.isOpen()) {
    if (errno == ENOENT) return std::nullopt;
    fail(path, "opened");
  }
  struct stat status {};
  requireRegularFile(path, file, status);
  std::string text(static_cast<size_t>(std::min<uint64_t>(status.st_size, limit)), '\0');
  size_t length = 0;
  while (length < text.size()) {
    const ssize_t got = ::read(file.descriptor(), text.data() + length, text.size() - length);
    if (got < 0 && errno != EINTR) fail(path, "read");
    if (got == 0) break;
    if (got > 0) length += static_cast<size_t>(got);
  }
  text.resize(length);
  return text;
}

void replaceFileAtomically(const std::string& path, std::string_view text) {
  replaceAtomically(path, [&](const std::string& temporary) { writeDurably(temporary, text); });
}

void copyFileAtomically(const std::string& from, const std::string& path) {
  File source(from, O_RDONLY | O_NONBLOCK);
  if (!source.isOpen()) fail(from, "opened");
  struct stat status {};
  requireRegularFile(from, source, status);
  const auto fill = [&](File& file) {
    std::string chunk(64 * 1024, '\0');
    for (;;) {
      const ssize_t got = ::read(source.descriptor(), chunk.data(), chunk.size());
      if (got < 0 && errno != EINTR) fail(from, "read");
      if (got == 0) return;
      if (got > 0) file.write(std::string_view(chunk).substr(0, static_cast<size_t>(got)));
    }
  };
  replaceAtomically(path, [&](const std::string& temporary) { makeDurably(temporary, fill); });
}

std::string moveAside(const std::string& path, const std::string& name) {
  std::string used = firstFree(name, [&](const std::string& to) {
    if (::renameat2(AT_FDCWD, path.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
      return true;
    }
    if (errno != EEXIST) fail(path, "moved aside");
    return false;
  });
  syncDirectoryOf(used);
  return used;
}

std::string writeNewFile(const std::string& name, std::string_view text) {
  std::string used = firstFree(name, [&](const std::string& to) {
    try {
      writeDurably(to, text);
      return true;
    } catch (const std::system_error& error) {
      if (error.code().value() == EEXIST) return false;
      throw;
    }
  });
  syncDirectoryOf(used);
  return used;
}

void removeFile(const std::string& path) {
  if (::unlink(path.c_str()) == 0) return syncDirectoryOf(path);
  if (errno != ENOENT) fail(path, "removed");
}

void syncFile(const std::string& path) {
  File file(path, O_RDONLY);
  if (!file.isOpen()) fail(path, "opened");
  file.sync();
  syncDirectoryOf(path);
}

std::string nameAside(const std::string& path, std::string_view what) {
  const std::time_t now = std::time(nullptr);
  std::tm utc{};
  (void)::gmtime_r(&now, &utc);
  char text[32];
  (void)std::strftime(text, sizeof text, "%Y%m%dT%H%M%SZ", &utc);
  return path + "." + std::string(what) + "-" + text;
}

}  // namespace agent
