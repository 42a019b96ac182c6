#include "lparams/params/text_reader.h"

#include <charconv>
#include <concepts>
#include <locale>
#include <utility>

namespace LPARAMS::Server {
namespace {

/// Puts a stream into the state of a freshly opened one in the "C" locale, for one extraction: a
/// caller's stream may group digits, read octal or stop at a width.
class PlainInput {
 public:
  explicit PlainInput(std::istream& is)
      : is_(is),
        flags_(is.flags(std::ios_base::dec | std::ios_base::skipws)),
        width_(is.width(0)),
        locale_(is.getloc()) {
    if (locale_ != std::locale::classic()) is_.imbue(std::locale::classic());
  }
  ~PlainInput() {
    is_.flags(flags_);
    is_.width(width_);
    if (locale_ != std::locale::classic()) is_.imbue(locale_);
  }

  PlainInput(const PlainInput&) = delete;
  PlainInput& operator=(const PlainInput&) = delete;

 private:
  std::istream& is_;
  const std::ios_base::fmtflags flags_;
  const std::streamsize width_;
  const std::locale locale_;
};

// A failed extraction stores 0 or the maximum into its target, so the target is a local.
template <typename T>
void extractPlain(std::istream& is, T& value) {
  const PlainInput plain(is);
  T extracted{};
  if (is >> extracted) value = std::move(extracted);
}

/// Reads plain digits out of the stream's buffer. Returns false, with nothing consumed, at anything
/// else: it is for the stream to say what that means.
template <std::integral T>
bool takeDigits(std::istream& is, T& value) {
  const std::string_view unread = GetArea::unread(is);
  const size_t start = unread.find_first_not_of(WHITE_SPACE);
  if (start == std::string_view::npos) return false;
  const char* const end = unread.data() + unread.size();
  const auto [stop, error] = std::from_chars(unread.data() + start, end, value);
  if (error != std::errc() || stop == end) return false;  // the number may go on behind the buffer
  GetArea::consume(is, static_cast<size_t>(stop - unread.data()));
  return true;
}

template <std::integral T>
void extractNumber(std::istream& is, T& value) {
  T number{};
  if (takeDigits(is, number)) {
    value = number;
  } else {
    extractPlain(is, value);
  }
}

}  // namespace

void extractValue(std::istream& is, bool& value) { extractPlain(is, value); }
void extractValue(std::istream& is, unsigned short& value) { extractNumber(is, value); }
void extractValue(std::istream& is, unsigned int& value) { extractNumber(is, value); }
void extractValue(std::istream& is, int& value) { extractNumber(is, value); }
void extractValue(std::istream& is, std::string& value) { extractPlain(is, value); }

std::string_view TextReader::extractUpTo(char delimiter) {
  copy_.clear();  // getline leaves it alone when the stream has failed
  std::getline(is_, copy_, delimiter);
  return copy_;
}

}  // namespace LPARAMS::Server
