// JSON as a text, made without a tree of values.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

namespace agent {

/// An object, member by member, in one line. Where there is no memory, its functions throw
/// std::bad_alloc.
class JsonObject {
 public:
  /// A string may hold any bytes: those that are not UTF-8 are replaced. REQUIRES: the value holds
  /// no others, for one that does needs memory to be destroyed, and ends the process where there is
  /// none; the name needs no escapes.
  void add(std::string_view name, const nlohmann::json& value);

  /// With a value that is a text already.
  void addText(std::string_view name, std::string_view text);

  std::string text() const { return text_ + "}"; }

 private:
  std::string text_ = "{";
};

}  // namespace agent
