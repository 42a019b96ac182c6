// JSON as a text, made without a tree of values.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

namespace agent {

/// The text of one value. A string may hold any bytes: those that are not UTF-8 are replaced. The
/// value holds no others: one that does needs memory to be destroyed, and ends the process where
/// there is none. Throws std::bad_alloc.
std::string jsonText(const nlohmann::json& value);

/// An object, member by member, in one line.
class JsonObject {
 public:
  /// REQUIRES: the value holds no others; the name is of letters.
  void add(std::string_view name, const nlohmann::json& value);

  /// With a value that is a text already.
  void addText(std::string_view name, std::string_view text);

  std::string text() const { return text_ + "}"; }

 private:
  std::string text_ = "{";
};

}  // namespace agent
