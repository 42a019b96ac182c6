// A bound for the module's load.
#pragma once

#include <cstddef>

namespace agent {

/// While it lives, ends the process, with a line in the log, once it has computed for longer than a
/// load of that many bytes can take: the module's reader goes round for ever on a file that breaks
/// off before the first byte, as one does that cannot be read. Time in which the process waits, for
/// a slow disk, does not count. REQUIRES: one exists at a time.
class LoadLimit {
 public:
  explicit LoadLimit(size_t bytes);
  ~LoadLimit();

  LoadLimit(const LoadLimit&) = delete;
  LoadLimit& operator=(const LoadLimit&) = delete;
};

}  // namespace agent
