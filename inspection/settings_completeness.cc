#include "inspection/settings_completeness.h"

#include <algorithm>
#include <vector>

#include "lparams/catalogue/catalogue.h"
#include "lparams/params/block_grammar.h"

namespace inspection {
namespace {

using namespace LPARAMS::Server;

constexpr std::string_view ROOT_HEAD = "/ROOT=";
constexpr std::string_view USERS = "USERS";

/// Takes the text up to the delimiter off the front, and the delimiter too.
std::string_view takeUpTo(std::string_view& text, char delimiter) {
  const size_t length = std::min(text.find(delimiter), text.size());
  const std::string_view taken = text.substr(0, length);
  text.remove_prefix(std::min(length + 1, text.size()));
  return taken;
}

/// What a block may hold that opens another one.
enum class Block { Root, Users, Other };

/// Groups and users are blocks also where their mark is missing: the module knows their names.
bool opensBlock(Block in, const Key& key) {
  if (key.namesBlock) return true;
  if (in == Block::Root) return Catalogue().getParam(std::string(key.name)) != nullptr;
  return in == Block::Users && key.name == USER_t::GROUP_NAME;
}

Block blockOf(Block in, const Key& key) {
  return in == Block::Root && key.name == USERS ? Block::Users : Block::Other;
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

  for (std::vector open{Block::Root}; !open.empty();) {
    if (text.find(KEY_MARK) == std::string_view::npos) {
      return {std::to_string(open.size()) + " of its blocks are not closed", size};
    }
    const Key key = keyOf(takeUpTo(text, KEY_MARK));
    if (key.name == END_KEY) {
      open.pop_back();
      if (!text.empty()) text.remove_prefix(1);
    } else if (opensBlock(open.back(), key)) {
      open.push_back(blockOf(open.back(), key));
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
