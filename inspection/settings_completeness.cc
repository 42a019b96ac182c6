#include "inspection/settings_completeness.h"

#include <algorithm>
#include <vector>

#include "inspection/text_source.h"
#include "lparams/catalogue/catalogue.h"
#include "lparams/params/block_reader.h"
#include "lparams/params/text_reader.h"

namespace inspection {
namespace {

using namespace LPARAMS::Server;

constexpr std::string_view ROOT_HEAD = "/ROOT=";

/// What the names in a text lead to. One user stands for all: the list of users makes an entry
/// whenever it is asked for one.
class Names {
 public:
  ParamGroup* root() { return &root_; }

  /// Null if the block, which may be null for one that the module does not know, has no such name.
  Param* find(ParamGroup* block, std::string_view name) {
    if (block == nullptr) return nullptr;
    if (block->getTypeId() != TYPE_USER_LIST) return block->getParam(std::string(name));
    return name == USER_t::GROUP_NAME ? &user_ : nullptr;
  }

 private:
  Catalogue root_;
  USER_t user_;
};

/// The member as a block; null if it is a value.
ParamGroup* blockOf(Param& member) {
  const int type = member.getTypeId();
  return type == TYPE_GROUP || type == TYPE_USER_LIST ? static_cast<ParamGroup*>(&member) : nullptr;
}

/// Numbers are looked for over line ends, and take the line that they are found in.
bool isNumber(const Param& value) {
  const int type = value.getTypeId();
  return type == TYPE_BOOL || type == TYPE_USHORT || type == TYPE_UINT;
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
  TextSource source(text);
  source.moveTo(ROOT_HEAD.size());
  BlockReader reader(source);
  Names names;
  Key key;
  for (std::vector open{names.root()}; !open.empty();) {
    // A key that goes on to the end of the text has lost its mark.
    if (!reader.next(key) || source.eof()) {
      return {std::to_string(open.size()) + " of its blocks are not closed", size};
    }
    Param* const member = names.find(open.back(), key.name);
    ParamGroup* const block = member != nullptr ? blockOf(*member) : nullptr;
    if (key.name == END_KEY) {
      open.pop_back();
      reader.finishEnd();
    } else if (block != nullptr || (member == nullptr && key.namesBlock)) {
      open.push_back(block);
    } else {
      if (member != nullptr && isNumber(*member)) {
        const size_t number = text.find_first_not_of(WHITE_SPACE, source.position());
        source.moveTo(std::min(number, text.size()));
      }
      reader.skipValue();
    }
  }
  const size_t behind = withoutIndent(text.substr(source.position())).size();
  if (behind > 0) return {"text follows the end of its root block", size - behind};
  return {};
}

std::string_view withoutByteOrderMark(std::string_view text) {
  if (text.starts_with(BYTE_ORDER_MARK)) text.remove_prefix(BYTE_ORDER_MARK.size());
  return text;
}

}  // namespace inspection
