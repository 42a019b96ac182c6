// Checks a write before the module, which takes every value as it stands, sees it.
#pragma once

#include <cstddef>
#include <string>

namespace agent {

/// Decodes the whole input of a write command as the module does, into a catalogue that is thrown
/// away: exact length, numbers within their limits, named values only, no control characters in
/// strings (a newline would write other settings into the file), no more users than allowed.
/// Thread-safe.
class RecordCheck {
 public:
  explicit RecordCheck(size_t maxUsers) : maxUsers_(maxUsers) {}

  /// Why the input must not be written: the parameter, its value and what would be right; empty if
  /// it may.
  std::string refusal(const std::string& input) const;

 private:
  const size_t maxUsers_;
};

}  // namespace agent
