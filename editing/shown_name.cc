#include "editing/shown_name.h"

#include <algorithm>

#include "text/escape.h"
#include "text/shortened.h"

namespace editing {
namespace {

constexpr std::string_view USERS_HEAD = "USERS[";

bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool hasFormOfName(std::string_view text) {
  return std::ranges::all_of(text, [](char c) {
    return isDigit(c) || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || c == '.';
  });
}

/// The name without a user's name, or the index of whatever, in brackets.
std::string withoutBrackets(std::string_view name) {
  std::string rest(name);
  const size_t open = name.find('[');
  const size_t close = name.rfind(']');
  const bool user = name.starts_with(USERS_HEAD);
  if (user && close == std::string_view::npos) return rest.erase(open, 1);  // it was forgotten
  if (close == std::string_view::npos || open > close) return rest;
  const std::string_view inside = name.substr(open + 1, close - open - 1);
  if (user || std::ranges::all_of(inside, isDigit)) rest.erase(open, close + 1 - open);
  return rest;
}

}  // namespace

std::string shownName(std::string_view name) {
  if (!hasFormOfName(withoutBrackets(name))) return text::notShown(name);
  return text::escaped(name.substr(0, text::MAX_FOREIGN));
}

}  // namespace editing
