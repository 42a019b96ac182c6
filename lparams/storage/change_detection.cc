#include "lparams/storage/change_detection.h"

#include <locale>
#include <ostream>
#include <streambuf>
#include <string>
#include <utility>

namespace LPARAMS::Server {
namespace {

/// A stream's buffer that keeps all that is written to it, in the memory of a former text.
class TextBuffer : public std::streambuf {
 public:
  explicit TextBuffer(std::string memory) : text_(std::move(memory)) {
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
    text_.resize(2 * kept + 64);
    setp(text_.data() + kept, text_.data() + text_.size());
    return traits_type::eq_int_type(c, traits_type::eof()) ? traits_type::not_eof(c)
                                                           : sputc(traits_type::to_char_type(c));
  }

 private:
  size_t used() const { return static_cast<size_t>(pptr() - text_.data()); }

  std::string text_;
};

}  // namespace

void raw_settings_(ParamGroup& group, std::string& out) {
  TextBuffer text(std::move(out));
  std::ostream os(&text);
  os.imbue(std::locale::classic());
  (void)group.save(os, 0);
  out = text.take();
}

bool is_not_changed_(ParamGroup& group, const std::string& raw, std::string& current) {
  current.resize(raw.size());  // the text seldom changes its size
  raw_settings_(group, current);
  return !raw.empty() && raw == current;
}

}  // namespace LPARAMS::Server
