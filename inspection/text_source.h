// A text in memory as the stream of a load.
#pragma once

#include <istream>
#include <streambuf>
#include <string_view>

namespace inspection {

/// Tells at any time how far it has been read. REQUIRES: the text outlives it.
class TextSource final : public std::istream {
 public:
  explicit TextSource(std::string_view text) : std::istream(nullptr), buffer_(text) {
    rdbuf(&buffer_);
  }

  /// The offset of the next byte.
  size_t position() const { return buffer_.position(); }

  void moveTo(size_t position) {
    clear();
    buffer_.moveTo(position);
  }

 private:
  class Buffer final : public std::streambuf {
   public:
    explicit Buffer(std::string_view text) {
      char* const begin = const_cast<char*>(text.data());  // never written to
      setg(begin, begin, begin + text.size());
    }

    size_t position() const { return static_cast<size_t>(gptr() - eback()); }
    void moveTo(size_t position) { setg(eback(), eback() + position, egptr()); }
  };

  Buffer buffer_;
};

}  // namespace inspection
