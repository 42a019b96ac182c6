// What parameters mean.
#include <iostream>

#include "client/failure.h"
#include "client/values.h"
#include "client/verbs/verb.h"
#include "client/verbs/verbs.h"
#include "schema/schema.h"
#include "text/escape.h"
#include "text/similar.h"

namespace client {
namespace {

using bridge::NamedValue;
using Json = CatalogueView::Json;

constexpr const char* DESCRIBE_NOTES =
    R"~(Prints what a parameter means, its value, saved value, default and legal values. If no agent
can be reached, it is what this program knows, without values. The fields of users are those
of USERS.

Examples:
  lparamsctl describe EXCHANGE_TIMEOUT
  lparamsctl describe USERS.PMP_AUTH
  lparamsctl describe LOG)~";

struct DescribeGiven {
  std::string name;
  bool json = false;
};

constexpr const char* INDENT = "  ";

const char* kindOf(const Json& param) {
  switch (param.at("type").get<int>()) {
    case 0:
      return "flag";
    case 1:
    case 2:
      return "number";
    case 4:
      return "enumeration";
    case 10:
      return "secret";
    default:
      return "text";
  }
}

/// The parameters of the name, in order: those of users as "USERS.NAME" unless one is named.
std::vector<std::string> namesFor(const CatalogueView& catalogue, const std::string& name) {
  if (name.find('[') != std::string::npos && catalogue.find(name) != nullptr) return {name};
  std::vector<std::string> names;
  for (const std::string& full : catalogue.names()) {
    const NamePieces pieces = takeApart(full);
    if (name == full || name == pieces.group || name == pieces.member) names.push_back(full);
  }
  if (!names.empty()) return names;
  std::vector<std::string> candidates = catalogue.names();
  for (const std::string& full : catalogue.names()) candidates.push_back(takeApart(full).member);
  const std::string similar = text::similar(name, candidates);
  throw Failure(programs::EXIT_ILLEGAL,
                text::inQuotes(name) + " is no group and no parameter" +
                    (similar.empty() ? "" : "; did you mean " + similar + "?"));
}

std::string legalLines(const Json& param) {
  if (!param.contains("values")) return INDENT + ("legal:   " + legalValues(param) + "\n");
  std::string lines;
  for (const Json& value : param.at("values")) {
    lines += INDENT + std::string(lines.empty() ? "legal:   " : "         ") +
             value.at("name").get<std::string>() + " (" + value.at("number").dump() + ")\n";
  }
  return lines;
}

std::string textOf(const std::string& name, const Json& param, const NamedValue* value) {
  std::string text = text::escaped(name) + "\n";
  const auto add = [&](const char* what, const std::string& words) {
    if (!words.empty()) text += INDENT + (what + words) + "\n";
  };
  add("kind:    ", kindOf(param));
  add("meaning: ", text::escaped(param.at("meaning").get<std::string>()));
  if (value != nullptr) {
    add("value:   ", shownValue(*value, value->running));
    add("saved:   ", shownValue(*value, value->saved));
  }
  const Json& initial = param.at("default");
  const bool isFlag = initial.is_boolean();
  const std::string byDefault = isFlag                ? (initial.get<bool>() ? "1" : "0")
                                : initial.is_string() ? initial.get<std::string>()
                                                      : initial.dump();
  add("default: ", byDefault.empty() ? "\"\"" : text::escaped(byDefault));
  text += legalLines(param);
  add("kept in: ", param.at("where") == "file" ? "the settings file; not in records of the bridge"
                                               : "the settings file");
  return text;
}

/// The agent's catalogue, or this program's own if no agent can be reached.
std::string reachableSchema(Store& store, bool& reached) {
  try {
    std::string schema = store.schema();
    reached = true;
    return schema;
  } catch (const Failure& failure) {
    if (failure.status != programs::EXIT_UNAVAILABLE) throw;
    return schema::ownSchema();
  }
}

void describe(Context& context, const DescribeGiven& given) {
  Store& store = context.store();
  bool reached = false;
  const CatalogueView catalogue(reachableSchema(store, reached));
  std::string text;
  Json document = Json::object();
  for (const std::string& full : namesFor(catalogue, given.name)) {
    const Json& param = *catalogue.find(full);
    const bool hasValue = reached && (full == given.name || !full.starts_with("USERS"));
    bridge::NamedValues values;
    if (hasValue && full != "USERS." + takeApart(full).member) values = store.get({full});
    text += textOf(full, param, values.values.empty() ? nullptr : values.values.data());
    document[full] = param;
  }
  std::cout << (given.json ? printedJson(document) : text);
}

}  // namespace

void addDescribe(CLI::App& app, Context& context) {
  const auto [command, given] =
      addVerb(app, context, "describe", "Tell what parameters mean", DESCRIBE_NOTES, describe);
  command.add_option("NAME", given->name, "A parameter, with or without its group, or a group")
      ->required();
  addJson(command, given->json);
}

}  // namespace client
