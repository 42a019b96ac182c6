#include "text/escape.h"

#include <utf8.h>
#include <cstdint>

namespace text {
namespace {

/// Of ASCII, those beyond it, the ends of lines and paragraphs, and what turns the direction of
/// text around, so that it reads differently from what it says (Unicode: Cc, Zl, Zp, Bidi_Control).
bool isControl(uint32_t character) {
  return character < ' ' || (character >= 0x7F && character <= 0x9F) || character == 0x061C ||
         character == 0x200E || character == 0x200F ||
         (character >= 0x2028 && character <= 0x202E) ||
         (character >= 0x2066 && character <= 0x2069);
}

void appendBytes(std::string& out, std::string_view bytes) {
  constexpr char DIGITS[] = "0123456789abcdef";
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    out += {'\\', 'x', DIGITS[byte / 16], DIGITS[byte % 16]};
  }
}

/// Most texts are, and need no look at each character.
bool isPlain(std::string_view text, std::string_view special) {
  for (const char c : text) {
    if (c < ' ' || c > '~' || special.find(c) != std::string_view::npos) return false;
  }
  return true;
}

/// `special` are the characters that get a backslash.
std::string escape(std::string_view text, std::string_view special) {
  if (isPlain(text, special)) return std::string(text);
  std::string out;
  const char* at = text.data();
  const char* const end = at + text.size();
  while (at != end) {
    for (const char* const valid = utf8::find_invalid(at, end); at != valid;) {
      const char* const begin = at;
      const uint32_t character = utf8::unchecked::next(at);
      const std::string_view bytes(begin, static_cast<size_t>(at - begin));
      if (isControl(character)) {
        appendBytes(out, bytes);
      } else {
        if (special.find(*begin) != std::string_view::npos) out += '\\';
        out += bytes;
      }
    }
    if (at != end) appendBytes(out, {at++, 1});
  }
  return out;
}

}  // namespace

std::string escaped(std::string_view text) { return escape(text, ""); }

std::string inQuotes(std::string_view text) { return '"' + escape(text, "\"\\") + '"'; }

bool isUtf8(std::string_view text) { return utf8::is_valid(text.begin(), text.end()); }

}  // namespace text
