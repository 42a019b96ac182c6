// A sync or rename that takes as long as a test wants, in a program that it starts.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>
#include <system_error>

namespace testing_support {

/// The library that makes it possible. REQUIRES: the test depends on held_sync.
inline constexpr const char* HELD_SYNC = PRODUCTS_DIR "/tests/held_sync.so";

/// "NAME=VALUE", to add to the environment of the program.
inline std::array<std::string, 2> heldSync() {
  return {std::string("LD_PRELOAD=") + HELD_SYNC,
          "ASAN_OPTIONS=verify_asan_link_order=0"};  // the sanitizer's own library comes second
}

/// Holds the next sync of the file or rename to it.
class HeldSync {
 public:
  explicit HeldSync(const std::string& file) : name_(file + ".hold") {
    if (::mkfifo(name_.c_str(), 0600) != 0) {
      throw std::system_error(errno, std::generic_category(), name_);
    }
  }
  ~HeldSync() { letItEnd(); }

  HeldSync(const HeldSync&) = delete;
  HeldSync& operator=(const HeldSync&) = delete;

  /// Waits until the program has come that far, and goes on to hold it.
  void waitForBegin() {
    pipe_ = ::open(name_.c_str(), O_WRONLY | O_CLOEXEC);
    (void)::unlink(name_.c_str());
  }

  void letItEnd() {
    if (pipe_ >= 0) (void)::close(pipe_);
    pipe_ = -1;
  }

 private:
  const std::string name_;
  int pipe_ = -1;
};

}  // namespace testing_support
