// Boost's property tree, kept as its INI form: one section a block.
#include <boost/property_tree/ini_parser.hpp>
#include <boost/property_tree/ptree.hpp>
#include <sstream>

#include "bench/peer.h"

namespace bench {
namespace {

namespace pt = boost::property_tree;

class PropertyTree : public Peer {
 public:
  void build(const Settings& settings) override {
    clear();
    for (const Block& block : settings.groups) add(block);
    for (const Block& block : settings.users) add(block);
  }

  std::string text() override {
    std::ostringstream os;
    pt::write_ini(os, document_);
    return std::move(os).str();
  }

  void clear() override { document_.clear(); }

  void load(const std::string& path, const Settings& settings, Values& values) override {
    pt::read_ini(path, document_);
    for (const Block& block : settings.groups) fetch(block, values);
    for (const Block& block : settings.users) fetch(block, values);
  }

 private:
  void add(const Block& block) {
    pt::ptree section;
    for (const Setting& setting : block.settings) {
      switch (setting.kind) {
        case Kind::Flag:
        case Kind::Number:
          section.add(setting.name, setting.number);
          break;
        case Kind::Name:
        case Kind::Text:
          section.add(setting.name, setting.text);
      }
    }
    document_.push_back({block.name, section});
  }

  void fetch(const Block& block, Values& values) {
    const pt::ptree& section = document_.get_child(block.name);
    for (const Setting& setting : block.settings) {
      switch (setting.kind) {
        case Kind::Flag:
          values.take(setting, section.get<bool>(setting.name) ? 1u : 0u);
          break;
        case Kind::Number:
          values.take(setting, section.get<uint32_t>(setting.name));
          break;
        case Kind::Name:
        case Kind::Text:
          values.take(setting, section.get<std::string>(setting.name));
      }
    }
  }

  pt::ptree document_;
};

}  // namespace

std::unique_ptr<Peer> makePropertyTree() { return std::make_unique<PropertyTree>(); }

}  // namespace bench
