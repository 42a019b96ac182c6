// libyang: the document is checked against a model with every name, range and legal value.
#include <libyang/libyang.h>

#include <set>

#include "bench/peer.h"

namespace bench {
namespace {

std::string typeOf(const Setting& setting) {
  switch (setting.kind) {
    case Kind::Flag:
      return "boolean;";
    case Kind::Number:
      return "uint32 { range \"" + std::to_string(setting.min) + ".." +
             std::to_string(setting.max) + "\"; }";
    case Kind::Name: {
      std::string type = "enumeration {";
      for (const auto* row = setting.variants; row->name != nullptr; ++row) {
        type += std::string(" enum \"") + row->name + "\";";
      }
      return type + " }";
    }
    case Kind::Text:
      return "string;";
  }
  return {};
}

std::string leavesOf(const Block& block) {
  std::string leaves;
  for (const Setting& setting : block.settings) {
    leaves += "    leaf " + setting.name + " { type " + typeOf(setting) + " }\n";
  }
  return leaves;
}

std::string modelOf(const Settings& settings) {
  std::string model = "module settings {\n  namespace \"urn:settings\";\n  prefix s;\n";
  for (const Block& block : settings.groups) {
    model += "  container " + block.name + " {\n" + leavesOf(block) + "  }\n";
  }
  if (!settings.users.empty()) {
    model += "  list USER {\n    key NAME;\n" + leavesOf(settings.users.front()) + "  }\n";
  }
  return model + "}\n";
}

class Yang : public Peer {
 public:
  explicit Yang(const Settings& settings) {
    check(ly_ctx_new(nullptr, LY_CTX_NO_YANGLIBRARY, &context_));
    check(lys_parse_mem(context_, modelOf(settings).c_str(), LYS_IN_YANG, nullptr));
  }
  ~Yang() override {
    clear();
    ly_ctx_destroy(context_);
  }

  void build(const Settings& settings) override {
    clear();
    const lys_module* model = ly_ctx_get_module_implemented(context_, "settings");
    for (const Block& block : settings.groups) {
      lyd_node* node = nullptr;
      check(lyd_new_inner(nullptr, model, block.name.c_str(), 0, &node));
      add(block, node);
    }
    for (const Block& block : settings.users) {
      lyd_node* node = nullptr;
      check(lyd_new_list(nullptr, model, "USER", 0, &node, block.settings.front().text.c_str()));
      add(block, node);
    }
  }

  std::string text() override {
    char* printed = nullptr;
    check(lyd_print_mem(&printed, tree_, LYD_JSON, LYD_PRINT_WITHSIBLINGS));
    std::string text(printed);
    std::free(printed);
    return text;
  }

  void clear() override {
    lyd_free_all(tree_);
    tree_ = nullptr;
  }

  void load(const std::string& path, const Settings& settings, Values& values) override {
    check(lyd_parse_data_path(context_, path.c_str(), LYD_JSON, LYD_PARSE_STRICT,
                              LYD_VALIDATE_PRESENT, &tree_));
    const lyd_node* node = tree_;
    for (const Block& block : settings.groups) fetch(block, next(node), values);
    for (const Block& block : settings.users) fetch(block, next(node), values);
  }

 private:
  void check(LY_ERR error) const {
    if (error != LY_SUCCESS) throw std::runtime_error(ly_errmsg(context_));
  }

  static const lyd_node* next(const lyd_node*& node) {
    const lyd_node* const current = node;
    node = node->next;
    return current;
  }

  void add(const Block& block, lyd_node* node) {
    const bool isUser = tree_ != nullptr && node->schema->nodetype == LYS_LIST;
    for (const Setting& setting : block.settings) {
      if (isUser && setting.name == "NAME") continue;  // the key is there already
      std::string value = setting.text;
      if (setting.kind == Kind::Flag) value = setting.number == 1 ? "true" : "false";
      if (setting.kind == Kind::Number) value = std::to_string(setting.number);
      check(lyd_new_term(node, nullptr, setting.name.c_str(), value.c_str(), 0, nullptr));
    }
    check(lyd_insert_sibling(tree_, node, &tree_));
  }

  /// In the order of the document: the cheapest way that the library offers.
  static void fetch(const Block& block, const lyd_node* node, Values& values) {
    const lyd_node* leaf = lyd_child(node);
    for (const Setting& setting : block.settings) {
      if (leaf == nullptr || setting.name != leaf->schema->name) {
        throw std::logic_error("a peer lacks " + setting.name);
      }
      const lyd_value& value = reinterpret_cast<const lyd_node_term*>(leaf)->value;
      switch (setting.kind) {
        case Kind::Flag:
          values.take(setting, value.boolean != 0 ? 1u : 0u);
          break;
        case Kind::Number:
          values.take(setting, value.uint32);
          break;
        case Kind::Name:
          values.take(setting, std::string_view(value.enum_item->name));
          break;
        case Kind::Text:
          values.take(setting, std::string_view(lyd_get_value(leaf)));
      }
      leaf = leaf->next;
    }
  }

  ly_ctx* context_ = nullptr;
  lyd_node* tree_ = nullptr;
};

}  // namespace

std::unique_ptr<Peer> makeYang(const Settings& settings) {
  return std::make_unique<Yang>(settings);
}

}  // namespace bench
