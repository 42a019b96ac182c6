// pugixml: one element a value.
#include <pugixml.hpp>

#include "bench/peer.h"

namespace bench {
namespace {

class Writer : public pugi::xml_writer {
 public:
  void write(const void* data, size_t size) override {
    text.append(static_cast<const char*>(data), size);
  }

  std::string text;
};

class Xml : public Peer {
 public:
  void build(const Settings& settings) override {
    clear();
    auto root = document_.append_child("ROOT");
    for (const Block& block : settings.groups) add(block, root.append_child(block.name.c_str()));
    auto users = root.append_child("USERS");
    for (const Block& block : settings.users) add(block, users.append_child("USER"));
  }

  std::string text() override {
    Writer writer;
    document_.save(writer, "    ", pugi::format_indent | pugi::format_no_declaration);
    return std::move(writer.text);
  }

  void clear() override { document_.reset(); }

  void load(const std::string& path, const Settings& settings, Values& values) override {
    const auto result = document_.load_file(path.c_str());
    if (!result) throw std::runtime_error(result.description());
    const auto root = document_.child("ROOT");
    for (const Block& block : settings.groups) fetch(block, root.child(block.name.c_str()), values);
    auto user = root.child("USERS").first_child();
    for (const Block& block : settings.users) {
      fetch(block, user, values);
      user = user.next_sibling();
    }
  }

 private:
  static void add(const Block& block, pugi::xml_node node) {
    for (const Setting& setting : block.settings) {
      auto text = node.append_child(setting.name.c_str()).text();
      switch (setting.kind) {
        case Kind::Flag:
          text.set(setting.number == 1);
          break;
        case Kind::Number:
          text.set(setting.number);
          break;
        case Kind::Name:
        case Kind::Text:
          if (!setting.text.empty()) text.set(setting.text.c_str());
      }
    }
  }

  static void fetch(const Block& block, pugi::xml_node node, Values& values) {
    for (const Setting& setting : block.settings) {
      const auto text = node.child(setting.name.c_str()).text();
      switch (setting.kind) {
        case Kind::Flag:
          values.take(setting, text.as_bool() ? 1u : 0u);
          break;
        case Kind::Number:
          values.take(setting, text.as_uint());
          break;
        case Kind::Name:
        case Kind::Text:
          values.take(setting, std::string_view(text.as_string()));
      }
    }
  }

  pugi::xml_document document_;
};

}  // namespace

std::unique_ptr<Peer> makeXml() { return std::make_unique<Xml>(); }

}  // namespace bench
