// Loaded before a program's libraries: makes the disk under the directory DISK_PLACE full or
// read-only while the file DISK_TROUBLE says so. It holds "full COUNT" or "read-only COUNT": from
// so many changing calls on since it was written, those that need space, or all that change
// anything, fail.
#undef _FILE_OFFSET_BITS
#undef _TIME_BITS

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <string_view>

namespace {

template <typename Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

std::string trouble() {
  char text[64];
  const char* const name = std::getenv("DISK_TROUBLE");
  if (name == nullptr) return {};
  const long file = syscall(SYS_openat, AT_FDCWD, name, O_RDONLY | O_CLOEXEC);
  if (file < 0) return {};
  const ssize_t size = read(static_cast<int>(file), text, sizeof text);
  (void)close(static_cast<int>(file));
  return {text, size > 0 ? static_cast<size_t>(size) : 0};
}

bool isOnTheDisk(std::string_view path) {
  const char* const place = std::getenv("DISK_PLACE");
  return place != nullptr && path.starts_with(place);
}

enum Call { Writes, Changes };

/// True, with errno set, if the call is one that fails.
bool fails(Call call, std::string_view path) {
  static std::mutex mutex;
  static std::string current;
  static long made = 0;

  if (!isOnTheDisk(path)) return false;
  const std::lock_guard lock(mutex);
  const std::string now = trouble();
  if (now != current) made = 0;
  current = now;
  const bool full = now.starts_with("full ");
  if (now.empty() || (full && call != Writes)) return false;
  if (made++ < std::strtol(now.c_str() + now.find(' '), nullptr, 10)) return false;
  errno = full ? ENOSPC : EROFS;
  return true;
}

bool fails(int file) {
  char path[PATH_MAX];
  const std::string name = "/proc/self/fd/" + std::to_string(file);
  const ssize_t length = readlink(name.c_str(), path, sizeof path);
  return length > 0 && fails(Writes, {path, static_cast<size_t>(length)});
}

/// Whether the file is opened at all; what is written to it is another call.
bool failsToOpen(const char* path, int flags) {
  return (flags & (O_WRONLY | O_RDWR | O_CREAT | O_TRUNC)) != 0 && fails(Changes, path);
}

int openWith(const char* name, const char* path, int flags, mode_t mode) {
  if (failsToOpen(path, flags)) return -1;
  return next<int(const char*, int, ...)>(name)(path, flags, mode);
}

FILE* streamWith(const char* name, const char* path, const char* mode) {
  if (failsToOpen(path, std::strpbrk(mode, "wa+") != nullptr ? O_WRONLY : O_RDONLY)) return nullptr;
  return next<FILE*(const char*, const char*)>(name)(path, mode);
}

}  // namespace

#pragma GCC visibility push(default)
extern "C" {

int open(const char* path, int flags, ...) {
  va_list more;
  va_start(more, flags);
  const auto mode = static_cast<mode_t>(va_arg(more, unsigned));
  va_end(more);
  return openWith("open", path, flags, mode);
}

int open64(const char* path, int flags, ...) {
  va_list more;
  va_start(more, flags);
  const auto mode = static_cast<mode_t>(va_arg(more, unsigned));
  va_end(more);
  return openWith("open64", path, flags, mode);
}

FILE* fopen(const char* path, const char* mode) { return streamWith("fopen", path, mode); }

FILE* fopen64(const char* path, const char* mode) { return streamWith("fopen64", path, mode); }

ssize_t write(int file, const void* bytes, size_t size) {
  if (fails(file)) return -1;
  return next<ssize_t(int, const void*, size_t)>("write")(file, bytes, size);
}

ssize_t writev(int file, const iovec* parts, int count) {
  if (fails(file)) return -1;
  return next<ssize_t(int, const iovec*, int)>("writev")(file, parts, count);
}

int rename(const char* from, const char* to) noexcept {
  if (fails(Changes, to)) return -1;
  return next<int(const char*, const char*)>("rename")(from, to);
}

int renameat2(int from, const char* name, int to, const char* newName, unsigned flags) noexcept {
  if (fails(Changes, newName)) return -1;
  return next<int(int, const char*, int, const char*, unsigned)>("renameat2")(from, name, to,
                                                                              newName, flags);
}

int unlink(const char* path) noexcept {
  if (fails(Changes, path)) return -1;
  return next<int(const char*)>("unlink")(path);
}

int remove(const char* path) noexcept {
  if (fails(Changes, path)) return -1;
  return next<int(const char*)>("remove")(path);
}

}  // extern "C"
#pragma GCC visibility pop
