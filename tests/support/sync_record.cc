#include "tests/support/sync_record.h"

#include <dlfcn.h>

#include <filesystem>
#include <utility>

namespace testing_support {
namespace {

bool g_recording = false;
std::vector<std::string> g_record;

}  // namespace

void recordSyncs() {
  g_record.clear();
  g_recording = true;
}

std::vector<std::string> syncs() {
  g_recording = false;
  return std::exchange(g_record, {});
}

void note(const std::string& what) {
  if (g_recording) g_record.push_back(what);
}

}  // namespace testing_support

// Found before the one of the library: the executable exports it.
extern "C" __attribute__((visibility("default"))) int fsync(int file) {
  namespace fs = std::filesystem;
  testing_support::note(fs::read_symlink("/proc/self/fd/" + std::to_string(file)).filename());
  static const auto next = reinterpret_cast<int (*)(int)>(::dlsym(RTLD_NEXT, "fsync"));
  return next(file);
}
