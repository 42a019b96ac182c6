#include "lparams/params/text_form.h"

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

std::string readUpTo(std::istream& is, char delimiter) {
  // A fresh string for every read: getline leaves its argument alone when the stream has failed.
  std::string text;
  std::getline(is, text, delimiter);
  return text;
}

}  // namespace

void putPieces(std::ostream& os, int indent, std::initializer_list<std::string_view> pieces) {
  for (; indent > 0; --indent) os.write("    ", 4);
  for (const std::string_view piece : pieces) {
    os.write(piece.data(), static_cast<std::streamsize>(piece.size()));
  }
}

void extractValue(std::istream& is, bool& value) { extractPlain(is, value); }
void extractValue(std::istream& is, unsigned short& value) { extractPlain(is, value); }
void extractValue(std::istream& is, unsigned int& value) { extractPlain(is, value); }
void extractValue(std::istream& is, int& value) { extractPlain(is, value); }
void extractValue(std::istream& is, std::string& value) { extractPlain(is, value); }

std::string restOfLine(std::istream& is) { return readUpTo(is, '\n'); }

std::string nextKey(std::istream& is) { return readUpTo(is, '='); }

}  // namespace LPARAMS::Server
