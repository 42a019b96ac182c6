// The text form of plain values: what a line of the settings file holds behind its "=".
//
// Numbers are plain decimal in both directions, whatever the locale, flags and width of the stream.
#pragma once

#include <charconv>
#include <concepts>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <string>
#include <string_view>

#include "lparams/params/copy_text.h"
#include "lparams/params/stream_areas.h"
#include "lparams/params/text_stream.h"

namespace LPARAMS::Server {

/// A number in decimal.
class Digits {
 public:
  template <std::integral T>
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

/// What a line is indented by, once per nesting level.
inline constexpr std::string_view LEVEL = "    ";

/// Appends the pieces as they are, behind the indentation of a nesting level.
void putPieces(std::ostream& os, int indent, std::initializer_list<std::string_view> pieces);

/// The same in place. Returns false, with nothing done, if the buffer has no room for it or the
/// nesting is deeper than the catalogue's.
template <std::same_as<std::string_view>... Pieces>
[[gnu::always_inline]] inline bool putInPlace(std::streambuf& buffer, int indent,
                                              Pieces... pieces) {
  constexpr std::string_view BLANKS = "            ";  // copied whole, whatever the level
  constexpr size_t DEEPEST = BLANKS.size() / LEVEL.size();
  char* at = StreamAreas::room(buffer, (BLANKS.size() + ... + pieces.size()));
  const auto level = static_cast<size_t>(indent);
  if (at == nullptr || level > DEEPEST) return false;
  BLANKS.copy(at, BLANKS.size());
  at += level * LEVEL.size();
  const auto append = [&at](std::string_view piece) {
    copyText(at, piece);
    at += piece.size();
  };
  (append(pieces), ...);
  StreamAreas::produce(buffer, at);
  return true;
}

/// Appends a line of the pieces and hands it on to the file: every line is written on its own.
template <std::convertible_to<std::string_view>... Pieces>
[[gnu::always_inline]] inline void putLine(std::ostream& os, int indent, const Pieces&... pieces) {
  constexpr std::string_view END = "\n";
  std::streambuf* const memory = TextStream::bufferOf(os);
  std::streambuf* const buffer = memory != nullptr ? memory : StreamAreas::fillable(os);
  if (buffer == nullptr || !putInPlace(*buffer, indent, std::string_view(pieces)..., END)) {
    putPieces(os, indent, {std::string_view(pieces)..., END});
  }
  if (memory == nullptr) os.flush();
}

// Each extractValue skips white space and reads a value as formatted input in the "C" locale does:
// the longest number, the flags 0 and 1, or one word. What cannot be read leaves the stream in the
// fail state and `value` as it was.

void extractValue(std::istream& is, bool& value);
void extractValue(std::istream& is, unsigned short& value);
void extractValue(std::istream& is, unsigned int& value);
void extractValue(std::istream& is, int& value);
void extractValue(std::istream& is, std::string& value);

/// The text without the white space and control bytes in front of it.
inline std::string_view withoutIndent(std::string_view text) {
  for (;;) {
    if (text.starts_with(LEVEL)) {
      text.remove_prefix(LEVEL.size());
    } else if (!text.empty() && static_cast<unsigned char>(text.front()) <= ' ') {
      text.remove_prefix(1);
    } else {
      return text;
    }
  }
}

/// Takes text off a stream. What it returns is valid until the stream or the reader is used again.
class TextReader {
 public:
  /// REQUIRES: the stream outlives the reader.
  explicit TextReader(std::istream& is) : is_(is) {}

  /// The text up to the next delimiter, which is consumed and not part of it, or up to the end of
  /// the input; empty if that has been reached already.
  std::string_view upTo(char delimiter) {
    const std::string_view unread = StreamAreas::unread(is_);
    const size_t size = unread.find(delimiter);
    if (size == std::string_view::npos) return extractUpTo(delimiter);
    StreamAreas::consume(is_, size + 1);
    return unread.substr(0, size);
  }

  std::string_view restOfLine() { return upTo('\n'); }

  /// Everything up to the next "=".
  std::string_view nextKey() { return upTo('='); }

  /// Takes the next key if it is this name and the stream's buffer holds the whole of it. What
  /// precedes a name on its line and the slash of a group do not count.
  bool takeKey(const char* name) {
    const std::string_view unread = StreamAreas::unread(is_);
    std::string_view rest = withoutIndent(unread);
    if (rest.starts_with('/')) rest.remove_prefix(1);
    const std::string_view wanted = name;
    if (rest.size() <= wanted.size() || rest[wanted.size()] != '=' || !rest.starts_with(wanted))
      return false;
    StreamAreas::consume(is_, static_cast<size_t>(rest.data() + wanted.size() + 1 - unread.data()));
    return true;
  }

  /// True once the input has ended before a text.
  bool failed() const { return is_.fail(); }

 private:
  std::string_view extractUpTo(char delimiter);

  std::istream& is_;
  std::string copy_;  // of a text that the stream's buffer does not hold as a whole
};

inline std::string restOfLine(std::istream& is) { return std::string(TextReader(is).restOfLine()); }

inline std::string nextKey(std::istream& is) { return std::string(TextReader(is).nextKey()); }

}  // namespace LPARAMS::Server
