// A peer: a well-kept library that keeps typed values in a file.
#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "bench/settings.h"
#include "bench/subject.h"

namespace bench {

/// Takes what the typed getters of a peer return. Compares it when told to, to prove once that the
/// peer's document says the same as ours.
class Values {
 public:
  explicit Values(bool compare) : compare_(compare) {}

  void take(const Setting& setting, uint32_t number) {
    keep(number);
    if (compare_ && number != setting.number) fail(setting);
  }
  void take(const Setting& setting, std::string_view text) {
    keep(text.data());
    if (compare_ && text != setting.text) fail(setting);
  }

 private:
  [[noreturn]] static void fail(const Setting& setting) {
    throw std::logic_error("a peer has another value of " + setting.name);
  }

  const bool compare_;
};

class Peer {
 public:
  virtual ~Peer() = default;

  /// Builds the document in memory.
  virtual void build(const Settings& settings) = 0;

  /// The document as the text of a file.
  virtual std::string text() = 0;

  /// Drops the document.
  virtual void clear() = 0;

  /// Reads the file into an empty document and fetches each value of the settings once.
  virtual void load(const std::string& path, const Settings& settings, Values& values) = 0;
};

std::unique_ptr<Peer> makeKeyFile();
std::unique_ptr<Peer> makeJson();
std::unique_ptr<Peer> makePropertyTree();
std::unique_ptr<Peer> makeXml();
/// The settings are the model: names, ranges and legal values.
std::unique_ptr<Peer> makeYang(const Settings& settings);

}  // namespace bench
