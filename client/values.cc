#include "client/values.h"

#include <algorithm>

#include "lparams/values/values.h"
#include "text/escape.h"

namespace client {

using bridge::NamedValue;
using Json = CatalogueView::Json;

namespace {

/// Most values have nothing but these.
bool isOrdinary(char c) { return c > ' ' && c <= '~' && c != '"' && c != '\\'; }

}  // namespace

std::string shownValue(const NamedValue& of, const std::optional<std::string>& value) {
  if (of.secret) return LPARAMS::Server::HIDDEN;
  if (!value) return "-";
  if (!value->empty() && *value != "-" && std::ranges::all_of(*value, isOrdinary)) return *value;
  const std::string quoted = text::inQuotes(*value);
  const bool plain = !value->empty() && *value != "-" && quoted.size() == value->size() + 2 &&
                     value->find(' ') == std::string::npos;
  return plain ? *value : quoted;
}

std::string changeLine(const NamedValue& value, bool saved) {
  std::string line = text::escaped(value.name) + ": ";
  if (value.before == value.running)
    return line + shownValue(value, value.running) + " (unchanged)";
  line += shownValue(value, value.before) + " -> " + shownValue(value, value.running);
  return saved ? line : line + "   (not saved)";
}

Json documentOf(const bridge::NamedValues& values, const CatalogueView& catalogue) {
  Json document = Json::object();
  for (const NamedValue& value : values.values) {
    if (!value.running && !value.secret) continue;
    const NamePieces pieces = takeApart(value.name);
    Json& group = document[pieces.group];
    Json& owner = value.name[pieces.group.size()] == '[' ? group[pieces.user] : group;
    const Json* const param = catalogue.find(value.name);
    owner[pieces.member] = !value.running     ? Json()
                           : param == nullptr ? Json(*value.running)
                                              : typedValue(*param, *value.running);
  }
  return document;
}

std::string printedJson(const Json& json) {
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace client
