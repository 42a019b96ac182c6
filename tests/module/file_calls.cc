// The narrow calls and the wide ones are defined here: their names have to stay two.
#undef _FILE_OFFSET_BITS
#undef _TIME_BITS

#include "tests/module/file_calls.h"

#include <fcntl.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <optional>
#include <string_view>

#include "tests/module/call_log.h"
#include "tests/module/failing_allocation.h"
#include "tests/module/next_function.h"

namespace host {
namespace {

std::string watched;
std::string ledPath;
std::string ledPlace;
std::string refusedPath;
int refusedError = 0;
std::atomic<int> writingError = 0;
std::atomic<int> nextRenameError = 0;
std::atomic<bool> nextCloseFails = false;

bool isSystemFile(std::string_view path) { return path.starts_with(SYSTEM_DIRECTORY); }

/// Where a call that names the path has to go; nothing, with errno set, if nothing is to be there.
std::optional<std::string> placeOf(std::string_view path) {
  if (!ledPath.empty() && path.starts_with(ledPath)) {
    return ledPlace + std::string(path.substr(ledPath.size()));
  }
  if (!isSystemFile(path)) return std::string(path);
  errno = ENOENT;
  return {};
}

/// True, with errno set, if opening the file is refused.
bool isRefused(std::string_view path, bool writes) {
  const int error = writes && writingError != 0 ? writingError.load()
                    : path == refusedPath       ? refusedError
                                                : 0;
  if (error != 0) errno = error;
  return error != 0;
}

void recordFile(const char* call, std::string_view path, const std::string& arguments = {}) {
  if (!watched.empty() && path.starts_with(watched)) {
    path.remove_prefix(watched.size());
  } else if (!isSystemFile(path)) {
    return;
  }
  record(std::string(call) + " " + std::string(path) + arguments);
}

/// The flags by name; what has no name here as a number.
std::string flagNames(int flags) {
  constexpr struct {
    int flag;
    const char* name;
  } NAMES[] = {
      {O_CREAT, "O_CREAT"}, {O_EXCL, "O_EXCL"}, {O_TRUNC, "O_TRUNC"}, {O_APPEND, "O_APPEND"}};
  const int access = flags & O_ACCMODE;
  std::string text = access == O_RDONLY ? "O_RDONLY" : access == O_WRONLY ? "O_WRONLY" : "O_RDWR";
  flags &= ~O_ACCMODE;
  for (const auto& [flag, name] : NAMES) {
    if ((flags & flag) == 0) continue;
    text += std::string("|") + name;
    flags &= ~flag;
  }
  return flags == 0 ? text : text + "|" + std::to_string(flags);
}

int openFile(const char* function, const char* path, int flags, mode_t mode) {
  char octal[16];
  std::snprintf(octal, sizeof octal, " %04o", mode);
  recordFile("open", path, " " + flagNames(flags) + octal);
  const auto place = placeOf(path);
  if (!place || isRefused(path, (flags & (O_CREAT | O_ACCMODE)) != O_RDONLY)) return -1;
  return nextFunction<int(const char*, int, ...)>(function)(place->c_str(), flags, mode);
}

FILE* openStream(const char* function, const char* path, const char* mode) {
  recordFile("fopen", path, std::string(" ") + mode);
  const auto place = placeOf(path);
  if (!place || isRefused(path, *mode != 'r')) return nullptr;
  return nextFunction<FILE*(const char*, const char*)>(function)(place->c_str(), mode);
}

mode_t modeArgument(int flags, va_list arguments) {
  return (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
}

}  // namespace

void watchDirectory(const std::string& path) { watched = path; }
void lead(const std::string& path, const std::string& place) {
  ledPath = path;
  ledPlace = place;
}
void refuseOpening(const std::string& path, int error) {
  refusedPath = path;
  refusedError = error;
}
void refuseWriting(int error) { writingError = error; }
void failNextRename(int error) { nextRenameError = error; }
void failNextClose() { nextCloseFails = true; }

}  // namespace host

#pragma GCC visibility push(default)
extern "C" {

int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = host::modeArgument(flags, arguments);
  va_end(arguments);
  return host::openFile("open", path, flags, mode);
}

int open64(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = host::modeArgument(flags, arguments);
  va_end(arguments);
  return host::openFile("open64", path, flags, mode);
}

FILE* fopen(const char* path, const char* mode) { return host::openStream("fopen", path, mode); }
FILE* fopen64(const char* path, const char* mode) {
  return host::openStream("fopen64", path, mode);
}

int fclose(FILE* stream) {
  const int result = host::nextFunction<int(FILE*)>("fclose")(stream);
  return host::nextCloseFails.exchange(false) ? EOF : result;
}

int remove(const char* path) noexcept {
  const host::OwnAllocations own;
  host::recordFile("remove", path);
  const auto place = host::placeOf(path);
  return place ? host::nextFunction<int(const char*)>("remove")(place->c_str()) : -1;
}

int rename(const char* from, const char* to) noexcept {
  const host::OwnAllocations own;
  std::string_view target(to);
  if (target.starts_with(host::watched)) target.remove_prefix(host::watched.size());
  host::recordFile("rename", from, " " + std::string(target));
  if (const int error = host::nextRenameError.exchange(0); error != 0) {
    errno = error;
    return -1;
  }
  const auto source = host::placeOf(from);
  const auto place = host::placeOf(to);
  if (!source || !place) return -1;
  return host::nextFunction<int(const char*, const char*)>("rename")(source->c_str(),
                                                                     place->c_str());
}

}  // extern "C"
#pragma GCC visibility pop
