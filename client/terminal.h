// The terminal of the user, wherever the standard streams lead.
#pragma once

#include <cstddef>
#include <string>

namespace client {

/// Throws Failure if there is none. Used by one thread.
class Terminal {
 public:
  Terminal();
  ~Terminal();
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  /// Asks for a line that is not to be seen, of less than `limit` bytes. Throws Failure at the end
  /// of the input.
  std::string askHidden(const std::string& question, size_t limit);

 private:
  void write(const std::string& text) const;
  /// Ends also when `signals`, unless it is -1, can be read from.
  std::string readLine(int signals, size_t limit) const;

  const int terminal_;
};

}  // namespace client
