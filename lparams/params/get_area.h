// The get area of a stream's buffer, in place.
#pragma once

#include <climits>
#include <cstddef>
#include <istream>
#include <streambuf>
#include <string_view>

namespace LPARAMS::Server {

/// Reads what a stream's buffer holds without a call for every character, where the stream itself
/// would do nothing but copy: its state is good and no stream is tied to it. Elsewhere the area is
/// empty, and the caller goes through the stream.
///
/// Only a class derived from the buffer may name the operations that give the area; a pointer to
/// member named there reaches them in every buffer.
class GetArea : std::streambuf {
 public:
  /// What is in the buffer and has not been read.
  static std::string_view unread(std::istream& is) {
    if (!is.good() || is.tie() != nullptr) return {};
    const std::streambuf& buffer = *is.rdbuf();
    const char* const begin = (buffer.*&GetArea::gptr)();
    const std::ptrdiff_t size = (buffer.*&GetArea::egptr)() - begin;
    return {begin, static_cast<size_t>(size < INT_MAX ? size : INT_MAX)};  // gbump takes an int
  }

  /// REQUIRES: so many bytes are unread.
  static void consume(std::istream& is, size_t size) {
    (is.rdbuf()->*&GetArea::gbump)(static_cast<int>(size));
  }
};

}  // namespace LPARAMS::Server
