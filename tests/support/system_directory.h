// The system's settings directory for a program that a test starts, without any right.
#pragma once

#include <array>
#include <string>

namespace testing_support {

/// "NAME=VALUE", to add to the environment of the program: its calls that name the system's
/// settings directory reach `place` in its stead. REQUIRES: the test depends on system_directory.
inline std::array<std::string, 3> systemDirectoryAt(const std::string& place) {
  return {"LD_PRELOAD=" PRODUCTS_DIR "/tests/system_directory.so",
          "LPARAMS_TEST_SYSTEM_DIRECTORY=" + place,
          "ASAN_OPTIONS=verify_asan_link_order=0"};  // the sanitizer's own library comes second
}

}  // namespace testing_support
