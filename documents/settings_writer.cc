#include "documents/settings_writer.h"

#include <string_view>

#include "documents/document.h"
#include "lparams/params/block_grammar.h"

namespace documents {
namespace {

using LPARAMS::Server::LEVEL;

/// Opens and closes blocks.
class Blocks {
 public:
  void open(std::string_view name) {
    indent();
    text.append("/").append(name).append("=\n");
    ++depth_;
  }

  void close() {
    --depth_;
    indent();
    text.append(LPARAMS::Server::END_KEY).append("=\n");
  }

  void closeTo(size_t depth) {
    while (depth_ > depth) close();
  }

  void add(std::string_view name, std::string_view value) {
    indent();
    text.append(name).append("=").append(value).append("\n");
  }

  std::string text;

 private:
  void indent() {
    for (size_t i = 0; i < depth_; ++i) text.append(LEVEL);
  }

  size_t depth_ = 0;
};

}  // namespace

std::string settingsText(const std::vector<bridge::NamedValue>& values) {
  Blocks blocks;
  blocks.open("ROOT");
  std::string_view group;
  std::string_view owner;
  for (const bridge::NamedValue& value : values) {
    if (!value.running) continue;
    const std::string_view name = value.name;
    const size_t dot = name.rfind('.');
    if (name.substr(0, dot) != owner) {
      owner = name.substr(0, dot);
      const std::string_view ownerGroup = owner.substr(0, owner.find('['));
      blocks.closeTo(ownerGroup == group ? 2 : 1);
      if (ownerGroup != group) blocks.open(ownerGroup);
      group = ownerGroup;
      if (group != owner) blocks.open("USER");
    }
    blocks.add(name.substr(dot + 1), *value.running);
  }
  blocks.closeTo(1);
  if (group != USERS) {
    blocks.open(USERS);
    blocks.close();
  }
  blocks.close();
  return std::move(blocks.text);
}

}  // namespace documents
