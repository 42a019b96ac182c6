// Lines and columns of a text.
#pragma once

#include <string_view>

#include "inspection/finding.h"

namespace inspection {

/// Counts lines on its way through a text, which it walks once.
class LineCounter {
 public:
  /// REQUIRES: the text outlives the counter.
  explicit LineCounter(std::string_view text) : text_(text) {}

  /// REQUIRES: the offset lies in no line before that of the last call.
  Place placeOf(size_t offset) {
    while (lineEnd_ < offset) {
      lineBegin_ = lineEnd_ + 1;
      lineEnd_ = text_.find('\n', lineBegin_);
      ++line_;
    }
    return {line_, offset - lineBegin_ + 1};
  }

 private:
  const std::string_view text_;
  size_t line_ = 1;
  size_t lineBegin_ = 0;
  size_t lineEnd_ = text_.find('\n');  // of its line end; kept, as a line may hold many keys
};

}  // namespace inspection
