#include "agent/base/json_text.h"

#include <nlohmann/json.hpp>

namespace agent {

void JsonObject::add(std::string_view name, const nlohmann::json& value) {
  addText(name, value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
}

void JsonObject::addText(std::string_view name, std::string_view text) {
  if (text_.size() > 1) text_ += ',';
  text_.append("\"").append(name).append("\":").append(text);
}

}  // namespace agent
