#include "client/quote.h"

#include <algorithm>

namespace client {
namespace {

bool isControl(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte < ' ' || byte == 0x7f;
}

void appendEscaped(std::string& out, char c) {
  constexpr char DIGITS[] = "0123456789abcdef";
  const auto byte = static_cast<unsigned char>(c);
  if (isControl(c)) {
    out += {'\\', 'x', DIGITS[byte / 16], DIGITS[byte % 16]};
  } else {
    out += c;
  }
}

}  // namespace

bool hasControlBytes(std::string_view text) { return std::ranges::any_of(text, isControl); }

std::string escaped(std::string_view text) {
  std::string out;
  for (const char c : text) appendEscaped(out, c);
  return out;
}

std::string inQuotes(std::string_view text) {
  std::string out = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') out += '\\';
    appendEscaped(out, c);
  }
  return out + '"';
}

}  // namespace client
