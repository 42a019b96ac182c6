// nlohmann-json: objects by name, the users an array.
#include <fstream>
#include <nlohmann/json.hpp>

#include "bench/peer.h"

namespace bench {
namespace {

using nlohmann::json;

class Json : public Peer {
 public:
  void build(const Settings& settings) override {
    document_ = json::object();
    for (const Block& block : settings.groups) document_[block.name] = objectOf(block);
    json& users = document_["USERS"] = json::array();
    for (const Block& block : settings.users) users.push_back(objectOf(block));
  }

  std::string text() override { return document_.dump(4); }

  void clear() override { document_ = {}; }

  void load(const std::string& path, const Settings& settings, Values& values) override {
    std::ifstream file(path);
    document_ = json::parse(file);
    for (const Block& block : settings.groups) fetch(block, document_.at(block.name), values);
    auto user = document_.at("USERS").begin();
    for (const Block& block : settings.users) fetch(block, *user++, values);
  }

 private:
  static json objectOf(const Block& block) {
    json object = json::object();
    for (const Setting& setting : block.settings) {
      switch (setting.kind) {
        case Kind::Flag:
          object[setting.name] = setting.number == 1;
          break;
        case Kind::Number:
          object[setting.name] = setting.number;
          break;
        case Kind::Name:
        case Kind::Text:
          object[setting.name] = setting.text;
      }
    }
    return object;
  }

  static void fetch(const Block& block, const json& object, Values& values) {
    for (const Setting& setting : block.settings) {
      const json& value = object.at(setting.name);
      switch (setting.kind) {
        case Kind::Flag:
          values.take(setting, value.get<bool>() ? 1u : 0u);
          break;
        case Kind::Number:
          values.take(setting, value.get<uint32_t>());
          break;
        case Kind::Name:
        case Kind::Text:
          values.take(setting, value.get<std::string>());
      }
    }
  }

  json document_;
};

}  // namespace

std::unique_ptr<Peer> makeJson() { return std::make_unique<Json>(); }

}  // namespace bench
