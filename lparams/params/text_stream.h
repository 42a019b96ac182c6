// A text that is written in memory.
#pragma once

#include <locale>
#include <ostream>
#include <streambuf>
#include <string>
#include <typeinfo>
#include <utility>

namespace LPARAMS::Server {

/// A stream that keeps all that is written to it, in the memory of a former text. It is in the "C"
/// locale. Whatever makes it fail is thrown, so that half a text is never taken for the whole one.
/// Not thread-safe.
class TextStream final : public std::ostream {
 public:
  explicit TextStream(std::string memory) : std::ostream(nullptr), buffer_(std::move(memory)) {
    rdbuf(&buffer_);
    exceptions(std::ios::badbit | std::ios::failbit);
    imbue(std::locale::classic());
  }

  /// The buffer of the stream, if it is such a one. It is always to be filled as it is, and there
  /// is nothing behind it to flush to.
  static std::streambuf* bufferOf(std::ostream& os) {
    return typeid(os) == typeid(TextStream) ? &static_cast<TextStream&>(os).buffer_ : nullptr;
  }

  /// The text. The stream is not to be used any more.
  std::string take() { return buffer_.take(); }

 private:
  class Buffer final : public std::streambuf {
   public:
    explicit Buffer(std::string memory) : text_(std::move(memory)) {
      setp(text_.data(), text_.data() + text_.size());
    }

    std::string take() {
      text_.resize(used());
      if (text_.capacity() - text_.size() > text_.size() / 4) text_.shrink_to_fit();
      return std::move(text_);
    }

   protected:
    int_type overflow(int_type c) override {
      const size_t kept = used();
      setp(pptr(), pptr());  // nothing more fits if there is no memory
      text_.resize(2 * kept + 64);
      setp(text_.data() + kept, text_.data() + text_.size());
      return traits_type::eq_int_type(c, traits_type::eof()) ? traits_type::not_eof(c)
                                                             : sputc(traits_type::to_char_type(c));
    }

   private:
    size_t used() const { return static_cast<size_t>(pptr() - text_.data()); }

    std::string text_;
  };

  Buffer buffer_;
};

}  // namespace LPARAMS::Server
