// Writing the text form: plain values, and lines.
//
// Numbers are plain decimal, whatever the locale, flags and width of the stream.
#pragma once

#include <charconv>
#include <concepts>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <string>
#include <string_view>

#include "lparams/params/text_stream.h"

namespace LPARAMS::Server {

/// A number in decimal.
class Digits {
 public:
  template <std::integral T>
  // cppcheck-suppress uninitMemberVar ; what is in front of the end is written here
  explicit Digits(T value) : end_(std::to_chars(std::begin(bytes_), std::end(bytes_), value).ptr) {}

  Digits(const Digits&) = delete;
  Digits& operator=(const Digits&) = delete;

  operator std::string_view() const { return {bytes_, static_cast<size_t>(end_ - bytes_)}; }

 private:
  char bytes_[std::numeric_limits<int>::digits10 + 2];  // one more digit and a sign
  const char* const end_;
};

// The text of a value, as long as the result and the value live.

template <std::integral T>
Digits textOf(T value) {
  return Digits(value);
}

inline std::string_view textOf(bool value) { return value ? "1" : "0"; }

inline std::string_view textOf(const std::string& value) { return value; }

/// Appends the pieces as they are, behind the indentation of a nesting level.
void putPieces(std::ostream& os, int indent, std::initializer_list<std::string_view> pieces);

/// Appends a line of the pieces and hands it on to the file: every line is written on its own. In
/// memory there is nothing to hand on to, and the line is put together where it stays.
///
/// Always inline: in 32 bit a text takes a quarter longer otherwise.
template <std::convertible_to<std::string_view>... Pieces>
[[gnu::always_inline]] inline void putLine(std::ostream& os, int indent, const Pieces&... pieces) {
  const auto level = static_cast<size_t>(indent);
  TextStream* const memory = TextStream::of(os);
  if (memory != nullptr && level <= TextStream::DEEPEST) {
    memory->appendLine(level, std::string_view(pieces)...);
  } else {
    putPieces(os, indent, {std::string_view(pieces)..., "\n"});
    os.flush();
  }
}

}  // namespace LPARAMS::Server
