// A text that is written in memory.
#pragma once

#include <concepts>
#include <locale>
#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>
#include <typeinfo>
#include <utility>

#include "lparams/params/block_grammar.h"

namespace LPARAMS::Server {

/// A stream that keeps all that is written to it. It is in the "C" locale. Whatever makes it fail
/// is thrown, so that half a text is never taken for the whole one. Not thread-safe.
class TextStream final : public std::ostream {
 public:
  /// Grows beyond the expected size where it must.
  explicit TextStream(size_t expected) : std::ostream(nullptr), buffer_(expected + BLANKS.size()) {
    rdbuf(&buffer_);
    exceptions(std::ios::badbit | std::ios::failbit);
    imbue(std::locale::classic());
  }

  /// The stream, if it is such a one. By its exact type, which costs a comparison and no search.
  static TextStream* of(std::ostream& os) {
    return typeid(os) == typeid(TextStream) ? static_cast<TextStream*>(&os) : nullptr;
  }

  /// Levels that appendLine can indent by: those of the catalogue.
  static constexpr size_t DEEPEST = 3;

  /// Appends a line of the pieces, behind the indentation of a nesting level. Throws std::bad_alloc
  /// with nothing appended. REQUIRES: the level is at most DEEPEST.
  ///
  /// Always inline, like its caller: the sizes of most pieces are constants there.
  template <std::same_as<std::string_view>... Pieces>
  [[gnu::always_inline]] void appendLine(size_t level, Pieces... pieces) {
    char* at = buffer_.room((BLANKS.size() + ... + pieces.size()) + 1);
    BLANKS.copy(at, BLANKS.size());  // all of them; the pieces go over those that are too many
    at += level * LEVEL.size();
    ((at += pieces.copy(at, pieces.size())), ...);
    *at++ = '\n';
    buffer_.endAt(at);
  }

  /// The text. The stream is not to be used any more.
  std::string take() { return buffer_.take(); }

 private:
  static constexpr std::string_view BLANKS = "            ";
  static_assert(BLANKS.size() == DEEPEST * LEVEL.size());

  class Buffer final : public std::streambuf {
   public:
    explicit Buffer(size_t size) : text_(size, '\0') {
      setp(text_.data(), text_.data() + text_.size());
    }

    /// Where the next bytes go, so many of which have room.
    char* room(size_t size) {
      if (size > static_cast<size_t>(epptr() - pptr())) grow(size);
      return pptr();
    }

    /// Ends the text there, within the room.
    void endAt(char* end) { setp(end, epptr()); }

    std::string take() {
      text_.resize(used());
      if (text_.capacity() - text_.size() > text_.size() / 4) text_.shrink_to_fit();
      return std::move(text_);
    }

   protected:
    int_type overflow(int_type c) override {
      grow(1);
      return traits_type::eq_int_type(c, traits_type::eof()) ? traits_type::not_eof(c)
                                                             : sputc(traits_type::to_char_type(c));
    }

   private:
    size_t used() const { return static_cast<size_t>(pptr() - text_.data()); }

    /// Makes room for so many more bytes, and as many again as there are.
    void grow(size_t size) {
      const size_t kept = used();
      text_.append(text_.size() + size + 64, '\0');
      setp(text_.data() + kept, text_.data() + text_.size());
    }

    std::string text_;
  };

  Buffer buffer_;
};

}  // namespace LPARAMS::Server
