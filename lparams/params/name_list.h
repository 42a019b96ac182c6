// The names on one line of the settings file, joined by "|".
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace LPARAMS::Server {

inline constexpr char NAME_SEPARATOR = '|';

/// Walks the names of a text, from the left. Names are not trimmed and may be empty, but an empty
/// text holds none.
class NameList {
 public:
  /// Behind a separator at the end stands one more name, which is empty, or nothing.
  enum Tail { EmptyName, Nothing };

  NameList(std::string_view text, Tail tail)
      : text_(text), end_(text.size() + (tail == EmptyName && !text.empty() ? 1 : 0)) {}

  /// Returns false when there are no more.
  bool next(std::string_view& name) {
    if (begin_ >= end_) return false;
    const size_t end = std::min(text_.find(NAME_SEPARATOR, begin_), text_.size());
    name = text_.substr(begin_, end - begin_);
    begin_ = end + 1;
    return true;
  }

 private:
  const std::string_view text_;
  const size_t end_;  ///< no name begins here or behind
  size_t begin_ = 0;
};

}  // namespace LPARAMS::Server
