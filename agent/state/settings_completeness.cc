#include "agent/state/settings_completeness.h"

namespace agent {
namespace {

constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";
constexpr std::string_view ROOT_HEAD = "/ROOT=";
constexpr std::string_view END_KEY = "end";

/// Takes the text up to the delimiter off the front, and the delimiter too.
std::string_view takeUpTo(std::string_view& text, char delimiter) {
  const size_t length = std::min(text.find(delimiter), text.size());
  const std::string_view taken = text.substr(0, length);
  text.remove_prefix(std::min(length + 1, text.size()));
  return taken;
}

std::string_view withoutLeadingBlanks(std::string_view text) {
  while (!text.empty() && static_cast<unsigned char>(text.front()) <= ' ') text.remove_prefix(1);
  return text;
}

}  // namespace

std::string incompleteBecause(std::string_view text) {
  if (text.empty()) return "it is empty";
  if (text.size() > MAX_SETTINGS_SIZE) return "it is larger than 16 MiB";
  if (text.find('\0') != std::string_view::npos) return "it holds a zero byte";
  text = withoutByteOrderMark(text);
  if (!text.starts_with(ROOT_HEAD)) return "it does not begin with " + std::string(ROOT_HEAD);
  text.remove_prefix(ROOT_HEAD.size());

  for (size_t open = 1; open > 0;) {
    if (text.find('=') == std::string_view::npos) {
      return std::to_string(open) + " of its blocks are not closed";
    }
    const std::string_view key = withoutLeadingBlanks(takeUpTo(text, '='));
    if (key == END_KEY) {
      --open;
      if (!text.empty()) text.remove_prefix(1);
    } else if (key.starts_with('/')) {
      ++open;
    } else {
      (void)takeUpTo(text, '\n');
    }
  }
  if (!withoutLeadingBlanks(text).empty()) return "text follows the end of its root block";
  return {};
}

std::string_view withoutByteOrderMark(std::string_view text) {
  if (text.starts_with(BYTE_ORDER_MARK)) text.remove_prefix(BYTE_ORDER_MARK.size());
  return text;
}

}  // namespace agent
