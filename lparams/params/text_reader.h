// Reading the text form: pieces of lines, and plain values.
//
// Numbers are plain decimal, whatever the locale, flags and width of the stream.
#pragma once

#include <string>
#include <string_view>

#include "lparams/params/get_area.h"

namespace LPARAMS::Server {

/// Takes text off a stream. What it returns is valid until the stream or the reader is used again.
class TextReader {
 public:
  /// REQUIRES: the stream outlives the reader.
  explicit TextReader(std::istream& is) : is_(is) {}

  /// The text up to the next delimiter, which is consumed and not part of it, or up to the end of
  /// the input; empty if that has been reached already.
  std::string_view upTo(char delimiter) {
    const std::string_view unread = GetArea::unread(is_);
    const size_t size = unread.find(delimiter);
    if (size == std::string_view::npos) return extractUpTo(delimiter);
    GetArea::consume(is_, size + 1);
    return unread.substr(0, size);
  }

  std::string_view restOfLine() { return upTo('\n'); }

  /// True once the input has ended before a text.
  bool failed() const { return is_.fail(); }

 private:
  std::string_view extractUpTo(char delimiter);

  std::istream& is_;
  std::string copy_;  // of a text that the stream's buffer does not hold as a whole
};

/// What formatted input skips in front of a value, line ends too.
inline constexpr std::string_view WHITE_SPACE = " \t\n\v\f\r";

// Each extractValue skips white space and reads a value as formatted input in the "C" locale does:
// the longest number, the flags 0 and 1, or one word. What cannot be read leaves the stream in the
// fail state and `value` as it was.

void extractValue(std::istream& is, bool& value);
void extractValue(std::istream& is, unsigned short& value);
void extractValue(std::istream& is, unsigned int& value);
void extractValue(std::istream& is, int& value);
void extractValue(std::istream& is, std::string& value);

}  // namespace LPARAMS::Server
