// What heldSync() loads before a program's libraries: the sync of FILE, and a rename to it, wait
// while somebody holds the pipe FILE.hold open for writing.
#undef _FILE_OFFSET_BITS
#undef _TIME_BITS

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <climits>
#include <string>

namespace {

template <typename Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

void waitWhileHeld(const std::string& file) {
  const int held = open((file + ".hold").c_str(), O_RDONLY | O_CLOEXEC);
  if (held < 0) return;
  char byte = 0;
  (void)!read(held, &byte, 1);
  (void)close(held);
}

}  // namespace

#pragma GCC visibility push(default)
extern "C" int fsync(int file) {
  char path[PATH_MAX];
  const std::string name = "/proc/self/fd/" + std::to_string(file);
  const ssize_t length = readlink(name.c_str(), path, sizeof path);
  if (length > 0) waitWhileHeld(std::string(path, static_cast<size_t>(length)));
  return next<int(int)>("fsync")(file);
}

extern "C" int rename(const char* from, const char* to) noexcept {
  waitWhileHeld(to);
  return next<int(const char*, const char*)>("rename")(from, to);
}
#pragma GCC visibility pop
