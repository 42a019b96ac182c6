// A text that is written in memory.
#pragma once

#include <ostream>
#include <streambuf>
#include <string>
#include <typeinfo>
#include <utility>

namespace LPARAMS::Server {

/// A stream's buffer that keeps all that is written to it, in the memory of a former text. Not
/// thread-safe.
class TextBuffer final : public std::streambuf {
 public:
  explicit TextBuffer(std::string memory) : text_(std::move(memory)) {
    setp(text_.data(), text_.data() + text_.size());
  }

  /// True if the stream writes into such a buffer: there is nothing behind it to flush to.
  static bool isUnder(const std::ostream& os) {
    const std::streambuf* const buffer = os.rdbuf();
    return buffer != nullptr && typeid(*buffer) == typeid(TextBuffer);
  }

  /// The text. The buffer is not to be used any more.
  std::string take() {
    text_.resize(used());
    if (text_.capacity() - text_.size() > text_.size() / 4) text_.shrink_to_fit();
    return std::move(text_);
  }

 protected:
  int_type overflow(int_type c) override {
    const size_t kept = used();
    text_.resize(2 * kept + 64);
    setp(text_.data() + kept, text_.data() + text_.size());
    return traits_type::eq_int_type(c, traits_type::eof()) ? traits_type::not_eof(c)
                                                           : sputc(traits_type::to_char_type(c));
  }

 private:
  size_t used() const { return static_cast<size_t>(pptr() - text_.data()); }

  std::string text_;
};

}  // namespace LPARAMS::Server
