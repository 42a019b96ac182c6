// A time limit for the module's load.
#pragma once

#include <cstddef>

namespace agent {

/// Ends the process, with a line in the log, if it computes for longer than a load of that many
/// bytes can take before the object is destroyed. The module's reader loops for ever on a file that
/// it can open but not read. Time spent waiting, for a slow disk, does not count. REQUIRES: one
/// exists at a time.
class LoadTimeout {
 public:
  explicit LoadTimeout(size_t bytes);
  ~LoadTimeout();

  LoadTimeout(const LoadTimeout&) = delete;
  LoadTimeout& operator=(const LoadTimeout&) = delete;
};

}  // namespace agent
