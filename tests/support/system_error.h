// What a system call came to, for tests that cannot go on without it.
#pragma once

#include <cerrno>
#include <string>
#include <system_error>

namespace testing_support {

/// Throws std::system_error with errno, unless `result` is 0.
inline void check(int result, const std::string& what) {
  if (result != 0) throw std::system_error(errno, std::generic_category(), what);
}

}  // namespace testing_support
