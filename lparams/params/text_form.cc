#include "lparams/params/text_form.h"

#include <charconv>
#include <istream>
#include <limits>
#include <locale>
#include <ostream>
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

template <typename T>
void putNumber(std::ostream& os, T value) {
  char digits[std::numeric_limits<T>::digits10 + 2];  // one more digit and a sign
  const auto end = std::to_chars(std::begin(digits), std::end(digits), value).ptr;
  putText(os, {digits, static_cast<size_t>(end - digits)});
}

std::string readUpTo(std::istream& is, char delimiter) {
  // A fresh string for every read: getline leaves its argument alone when the stream has failed.
  std::string text;
  std::getline(is, text, delimiter);
  return text;
}

}  // namespace

void putText(std::ostream& os, std::string_view text) {
  os.write(text.data(), static_cast<std::streamsize>(text.size()));
}

void putIndent(std::ostream& os, int indent) {
  for (; indent > 0; --indent) putText(os, "    ");
}

void endLine(std::ostream& os) {
  os.put('\n');
  os.flush();
}

void putValue(std::ostream& os, bool value) { os.put(value ? '1' : '0'); }
void putValue(std::ostream& os, unsigned short value) { putNumber(os, value); }
void putValue(std::ostream& os, unsigned int value) { putNumber(os, value); }
void putValue(std::ostream& os, int value) { putNumber(os, value); }
void putValue(std::ostream& os, const std::string& value) { putText(os, value); }

void extractValue(std::istream& is, bool& value) { extractPlain(is, value); }
void extractValue(std::istream& is, unsigned short& value) { extractPlain(is, value); }
void extractValue(std::istream& is, unsigned int& value) { extractPlain(is, value); }
void extractValue(std::istream& is, int& value) { extractPlain(is, value); }
void extractValue(std::istream& is, std::string& value) { extractPlain(is, value); }

std::string restOfLine(std::istream& is) { return readUpTo(is, '\n'); }

std::string nextKey(std::istream& is) { return readUpTo(is, '='); }

}  // namespace LPARAMS::Server
