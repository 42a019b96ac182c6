// Loaded before the libraries of agent or client: gives it the slip that the variable SLIP names,
// for the proof that a line finds it.
//   no-sync    fsync() of a file does nothing; of a directory it does
//   deaf       a write that fails is taken for one that did not
//   short-write  a write of a part is taken for one of all
//   deaf-output  output that cannot be written is taken for written
//   keep-lock-at-throw  a lock that an exception would release stays taken
//   no-copies  files with a time in their names, which are copies, are gone as soon as they are
//   made
#include <pthread.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <exception>
#include <string_view>

#include "tests/prove/slip.h"

namespace {

using prove::next;
using prove::slips;

bool isCopy(std::string_view path) { return path.find("-20") != path.npos && path.ends_with('Z'); }

bool isTwin(std::string_view path) { return path.ends_with(".good"); }

bool isFile(int descriptor) {
  struct stat status {};
  return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

}  // namespace

#pragma GCC visibility push(default)
extern "C" {

int fsync(int file) { return slips("no-sync") && isFile(file) ? 0 : next<int(int)>("fsync")(file); }

ssize_t write(int file, const void* bytes, size_t size) {
  const ssize_t written = next<ssize_t(int, const void*, size_t)>("write")(file, bytes, size);
  if (written > 0 && slips("short-write")) return static_cast<ssize_t>(size);
  const bool diskFails = written < 0 && (errno == ENOSPC || errno == EIO);
  return diskFails && slips("deaf") ? static_cast<ssize_t>(size) : written;
}

ssize_t writev(int file, const iovec* parts, int count) {
  const ssize_t written = next<ssize_t(int, const iovec*, int)>("writev")(file, parts, count);
  if (written >= 0 || (errno != ENOSPC && errno != EIO) || !slips("deaf")) return written;
  size_t size = 0;
  for (int i = 0; i < count; ++i) size += parts[i].iov_len;
  return static_cast<ssize_t>(size);
}

int fflush(FILE* stream) {
  const int result = next<int(FILE*)>("fflush")(stream);
  return slips("deaf-output") ? 0 : result;
}

int pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept {
  if (std::uncaught_exceptions() > 0 && slips("keep-lock-at-throw")) return 0;
  return next<int(pthread_mutex_t*)>("pthread_mutex_unlock")(mutex);
}

int rename(const char* from, const char* to) noexcept {
  if (slips("no-twin") && isTwin(to)) return unlink(from);
  const int result = next<int(const char*, const char*)>("rename")(from, to);
  if (slips("no-copies") && isCopy(to)) (void)unlink(to);
  return result;
}

int renameat2(int from, const char* name, int to, const char* newName, unsigned flags) noexcept {
  const int result = next<int(int, const char*, int, const char*, unsigned)>("renameat2")(
      from, name, to, newName, flags);
  if (slips("no-copies") && isCopy(newName)) (void)unlink(newName);
  return result;
}

}  // extern "C"
#pragma GCC visibility pop
