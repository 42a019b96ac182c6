#include "inspection/settings_completeness.h"

#include <algorithm>

#include "lparams/params/block_grammar.h"

namespace inspection {
namespace {

using namespace LPARAMS::Server;

constexpr std::string_view ROOT_HEAD = "/ROOT=";

/// Takes the text up to the delimiter off the front, and the delimiter too.
std::string_view takeUpTo(std::string_view& text, char delimiter) {
  const size_t length = std::min(text.find(delimiter), text.size());
  const std::string_view taken = text.substr(0, length);
  text.remove_prefix(std::min(length + 1, text.size()));
  return taken;
}

}  // namespace

std::string incompleteBecause(std::string_view text) { return incompleteness(text).reason; }

Incompleteness incompleteness(std::string_view text) {
  const size_t size = text.size();
  if (text.empty()) return {"it is empty"};
  if (size > MAX_SETTINGS_SIZE) return {"it is larger than 16 MiB", MAX_SETTINGS_SIZE};
  if (const size_t zero = text.find('\0'); zero != std::string_view::npos) {
    return {"it holds a zero byte", zero};
  }
  text = withoutByteOrderMark(text);
  if (!text.starts_with(ROOT_HEAD)) return {"it does not begin with " + std::string(ROOT_HEAD)};
  text.remove_prefix(ROOT_HEAD.size());

  for (size_t open = 1; open > 0;) {
    if (text.find(KEY_MARK) == std::string_view::npos) {
      return {std::to_string(open) + " of its blocks are not closed", size};
    }
    const Key key = keyOf(takeUpTo(text, KEY_MARK));
    if (key.name == END_KEY) {
      --open;
      if (!text.empty()) text.remove_prefix(1);
    } else if (key.namesBlock) {
      ++open;
    } else {
      (void)takeUpTo(text, '\n');
    }
  }
  const size_t behind = withoutIndent(text).size();
  if (behind > 0) return {"text follows the end of its root block", size - behind};
  return {};
}

std::string_view withoutByteOrderMark(std::string_view text) {
  if (text.starts_with(BYTE_ORDER_MARK)) text.remove_prefix(BYTE_ORDER_MARK.size());
  return text;
}

}  // namespace inspection
