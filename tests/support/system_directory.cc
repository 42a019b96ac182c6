// What systemDirectoryAt() loads before a program's libraries: calls that name a file in the
// system's settings directory reach the directory that the environment names. The calls are those
// with which the agent and its module reach that file.
#undef _FILE_OFFSET_BITS  // the narrow calls and the wide ones keep two names
#undef _TIME_BITS

#include <dlfcn.h>
#include <fcntl.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

template <typename Function>
Function* nextFunction(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

std::string placeOf(std::string_view path) {
  constexpr std::string_view SYSTEM_DIRECTORY = "/etc/kestrel/";
  const char* place = std::getenv("LPARAMS_TEST_SYSTEM_DIRECTORY");
  if (place == nullptr || !path.starts_with(SYSTEM_DIRECTORY)) return std::string(path);
  return std::string(place) + "/" + std::string(path.substr(SYSTEM_DIRECTORY.size()));
}

int openFile(const char* function, const char* path, int flags, va_list arguments) {
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
  return nextFunction<int(const char*, int, ...)>(function)(placeOf(path).c_str(), flags, mode);
}

FILE* openStream(const char* function, const char* path, const char* mode) {
  return nextFunction<FILE*(const char*, const char*)>(function)(placeOf(path).c_str(), mode);
}

}  // namespace

#pragma GCC visibility push(default)
extern "C" {

int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const int file = openFile("open", path, flags, arguments);
  va_end(arguments);
  return file;
}

int open64(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const int file = openFile("open64", path, flags, arguments);
  va_end(arguments);
  return file;
}

FILE* fopen(const char* path, const char* mode) { return openStream("fopen", path, mode); }
FILE* fopen64(const char* path, const char* mode) { return openStream("fopen64", path, mode); }

int remove(const char* path) noexcept {
  return nextFunction<int(const char*)>("remove")(placeOf(path).c_str());
}

}  // extern "C"
#pragma GCC visibility pop
