#include "tests/support/readable_bytes.h"

namespace testing_support {
namespace {

constexpr char DIGITS[] = "0123456789ABCDEF";

void appendDigits(std::string& text, char c) {
  const auto byte = static_cast<unsigned char>(c);
  text += DIGITS[byte / 16];
  text += DIGITS[byte % 16];
}

}  // namespace

std::string inQuotes(std::string_view bytes) {
  std::string text = "\"";
  for (const char c : bytes) {
    if (c == '\n') {
      text += "\\n";
    } else if (c == '\r') {
      text += "\\r";
    } else if (c == '\t') {
      text += "\\t";
    } else if (c == '"' || c == '\\') {
      text += {'\\', c};
    } else if (c < ' ' || c > '~') {
      text += "\\x";
      appendDigits(text, c);
    } else {
      text += c;
    }
  }
  return text + '"';
}

std::string hex(std::string_view bytes) {
  std::string text;
  for (const char c : bytes) {
    if (!text.empty()) text += ' ';
    appendDigits(text, c);
  }
  return text;
}

std::string unhex(std::string_view pairs) {
  std::string digits;
  for (const char c : pairs) {
    if (c != ' ' && c != '\n') digits += c;
  }
  std::string bytes;
  for (size_t i = 0; i < digits.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
  }
  return bytes;
}

}  // namespace testing_support
