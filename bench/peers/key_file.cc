// GLib's key file: sections of keys, one section a block.
#include <glib.h>

#include "bench/peer.h"

namespace bench {
namespace {

void check(GError* error) {
  if (error != nullptr) throw std::runtime_error(error->message);
}

class KeyFile : public Peer {
 public:
  ~KeyFile() override { clear(); }

  void build(const Settings& settings) override {
    clear();
    file_ = g_key_file_new();
    for (const Block& block : settings.groups) add(block);
    for (const Block& block : settings.users) add(block);
  }

  std::string text() override {
    gsize size = 0;
    gchar* data = g_key_file_to_data(file_, &size, nullptr);
    std::string text(data, size);
    g_free(data);
    return text;
  }

  void clear() override {
    if (file_ != nullptr) g_key_file_free(file_);
    file_ = nullptr;
  }

  void load(const std::string& path, const Settings& settings, Values& values) override {
    GError* error = nullptr;
    file_ = g_key_file_new();
    g_key_file_load_from_file(file_, path.c_str(), G_KEY_FILE_NONE, &error);
    check(error);
    for (const Block& block : settings.groups) fetch(block, values);
    for (const Block& block : settings.users) fetch(block, values);
  }

 private:
  void add(const Block& block) {
    for (const Setting& setting : block.settings) {
      const char* const name = setting.name.c_str();
      switch (setting.kind) {
        case Kind::Flag:
          g_key_file_set_boolean(file_, block.name.c_str(), name, setting.number);
          break;
        case Kind::Number:
          g_key_file_set_uint64(file_, block.name.c_str(), name, setting.number);
          break;
        case Kind::Name:
        case Kind::Text:
          g_key_file_set_string(file_, block.name.c_str(), name, setting.text.c_str());
      }
    }
  }

  void fetch(const Block& block, Values& values) {
    GError* error = nullptr;
    for (const Setting& setting : block.settings) {
      const char* const name = setting.name.c_str();
      switch (setting.kind) {
        case Kind::Flag:
          values.take(setting,
                      g_key_file_get_boolean(file_, block.name.c_str(), name, &error) ? 1 : 0);
          break;
        case Kind::Number:
          values.take(setting, static_cast<uint32_t>(
                                   g_key_file_get_uint64(file_, block.name.c_str(), name, &error)));
          break;
        case Kind::Name:
        case Kind::Text: {
          gchar* text = g_key_file_get_string(file_, block.name.c_str(), name, &error);
          check(error);
          values.take(setting, std::string_view(text));
          g_free(text);
        }
      }
      check(error);
    }
  }

  GKeyFile* file_ = nullptr;
};

}  // namespace

std::unique_ptr<Peer> makeKeyFile() { return std::make_unique<KeyFile>(); }

}  // namespace bench
