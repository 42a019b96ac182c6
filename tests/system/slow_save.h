// A save that takes as long as a test wants.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <vector>

namespace system_testing {

/// A save that does not end before the test says so: a file that it writes is a pipe that holds
/// less than the settings. REQUIRES: they have more than 64 KiB.
class SlowSave {
 public:
  explicit SlowSave(const std::string& path) {
    if (mkfifo(path.c_str(), 0600) != 0) {
      throw std::system_error(errno, std::generic_category(), path);
    }
    pipe_ = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  }
  ~SlowSave() { (void)close(pipe_); }

  SlowSave(const SlowSave&) = delete;
  SlowSave& operator=(const SlowSave&) = delete;

  void waitForBegin() const {
    pollfd writer{pipe_, POLLIN, 0};
    (void)poll(&writer, 1, -1);
  }

  /// Takes all that is written. Returns how much it was.
  size_t letItEnd() const {
    (void)fcntl(pipe_, F_SETFL, 0);
    std::vector<char> bytes(65536);
    size_t total = 0;
    for (ssize_t count; (count = ::read(pipe_, bytes.data(), bytes.size())) > 0;) {
      total += static_cast<size_t>(count);
    }
    return total;
  }

 private:
  int pipe_;
};

}  // namespace system_testing
