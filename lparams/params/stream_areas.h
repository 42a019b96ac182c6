// The areas of a stream's buffer, in place.
#pragma once

#include <climits>
#include <cstddef>
#include <istream>
#include <ostream>
#include <streambuf>
#include <string_view>

namespace LPARAMS::Server {

/// Reads and fills the buffer of a stream without a call for every piece, where the stream itself
/// would do nothing but copy: its state is good, no stream is tied to it and it does not flush by
/// itself. Elsewhere the areas are empty, and the caller goes through the stream.
///
/// Only a class derived from the buffer may name the operations that give the areas; a pointer to
/// member named there reaches them in every buffer.
class StreamAreas : std::streambuf {
 public:
  /// What is in the buffer and has not been read.
  static std::string_view unread(std::istream& is) {
    if (!is.good() || is.tie() != nullptr) return {};
    const std::streambuf& buffer = *is.rdbuf();
    const char* const begin = (buffer.*&StreamAreas::gptr)();
    return {begin, bounded((buffer.*&StreamAreas::egptr)() - begin)};
  }

  /// REQUIRES: so many bytes are unread.
  static void consume(std::istream& is, size_t size) {
    (is.rdbuf()->*&StreamAreas::gbump)(static_cast<int>(size));
  }

  /// The buffer of the stream; null where it is not to be filled in place.
  static std::streambuf* fillable(std::ostream& os) {
    const bool plain =
        os.good() && os.tie() == nullptr && (os.flags() & std::ios_base::unitbuf) == 0;
    return plain ? os.rdbuf() : nullptr;
  }

  /// Where the next `size` bytes of output go; null if the buffer has no room for them.
  static char* room(const std::streambuf& buffer, size_t size) {
    char* const begin = (buffer.*&StreamAreas::pptr)();
    return size <= bounded((buffer.*&StreamAreas::epptr)() - begin) ? begin : nullptr;
  }

  /// REQUIRES: the room has been filled up to here.
  static void produce(std::streambuf& buffer, const char* end) {
    (buffer.*&StreamAreas::pbump)(static_cast<int>(end - (buffer.*&StreamAreas::pptr)()));
  }

 private:
  /// The operations that move the areas' marks take an int.
  static size_t bounded(std::ptrdiff_t size) {
    return static_cast<size_t>(size < INT_MAX ? size : INT_MAX);
  }
};

}  // namespace LPARAMS::Server
