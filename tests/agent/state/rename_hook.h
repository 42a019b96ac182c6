// The rename(2) of this process, for a test that wants to be asked at that point of a save.
#pragma once

#include <functional>
#include <string>

namespace agent_testing {

/// Gives the file the new name, as the system does. Returns 0, or -1 with the reason in errno.
int renameReally(const std::string& from, const std::string& to);

using RenameHook = std::function<int(const std::string& from, const std::string& to)>;

/// While it lives, the hook is called instead of rename, by the module and the agent's parts.
class HookedRename {
 public:
  explicit HookedRename(RenameHook hook);
  ~HookedRename();

  HookedRename(const HookedRename&) = delete;
  HookedRename& operator=(const HookedRename&) = delete;
};

}  // namespace agent_testing
