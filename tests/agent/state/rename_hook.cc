#include "tests/agent/state/rename_hook.h"

#include <dlfcn.h>

#include <cstdio>
#include <utility>

#include "tests/module/failing_allocation.h"

namespace agent_testing {
namespace {

RenameHook& currentHook() {
  static RenameHook hook;
  return hook;
}

}  // namespace

int renameReally(const std::string& from, const std::string& to) {
  using Rename = int(const char*, const char*);
  static const auto next = reinterpret_cast<Rename*>(::dlsym(RTLD_NEXT, "rename"));
  return next(from.c_str(), to.c_str());
}

HookedRename::HookedRename(RenameHook hook) { currentHook() = std::move(hook); }

HookedRename::~HookedRename() { currentHook() = nullptr; }

}  // namespace agent_testing

// Found before the one of the library: the executable exports it.
extern "C" __attribute__((visibility("default"))) int rename(const char* from,
                                                             const char* to) noexcept {
  using namespace agent_testing;
  const host::OwnAllocations own;
  return currentHook() ? currentHook()(from, to) : renameReally(from, to);
}
