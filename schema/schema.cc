#include "schema/schema.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "lparams/values/values.h"
#include "lparams/values/visit.h"
#include "text/hash.h"

namespace schema {
namespace {

using namespace LPARAMS::Server;
using Json = nlohmann::ordered_json;

constexpr const char* MEANING = "meaning";

/// Adds to the parameter's description what its class has: the legal values and the default.
struct DescribeValues {
  Json& description;

  void operator()(const BoolParam& param) const { description["default"] = param.value; }

  template <typename T, int TypeId>
  void operator()(const NumericParam<T, TypeId>& param) const {
    description["min"] = param.min;
    description["max"] = param.max;
    description["default"] = param.value;
  }

  void operator()(EnumParam& param) const {
    Json& values = description["values"] = Json::array();
    for (const Variant* row = param.variants; row->name != nullptr; ++row) {
      values.push_back({{"name", row->name}, {"number", row->value}});
    }
    description["default"] = valueText(param);
  }

  template <int TypeId>
  void operator()(const SimpleParam<std::string, TypeId>& param) const {
    description["default"] = param.value;
  }
};

Json describe(Param& param, bool onBridge) {
  Json description = {{"name", param.name}, {"type", param.getTypeId()}};
  visit(param, DescribeValues{description});
  description["where"] = onBridge ? "bridge" : "file";
  description[MEANING] = meaningOf(param);
  return description;
}

Json describeMembers(const ParamGroup& group) {
  Json members = Json::array();
  for (Param* param : group.fileParams) {
    const bool onBridge = std::ranges::find(group.wireParams, param) != group.wireParams.end();
    members.push_back(describe(*param, onBridge));
  }
  return members;
}

std::string hashOf(Json groups) {
  for (Json& group : groups) {
    for (Json& param : group["params"]) param.erase(MEANING);
  }
  return text::hashOf(groups.dump());
}

}  // namespace

Json schemaOf(const Catalogue& catalogue) {
  const USER_t user;
  Json groups = Json::array();
  for (const ParamGroup* group : catalogue.groups()) {
    const bool isList = group == catalogue.USERS;
    groups.push_back({{"name", group->name},
                      {"list", isList},
                      {"params", describeMembers(isList ? user : *group)}});
  }
  const std::string hash = hashOf(groups);
  return {{"catalogue", hash}, {"groups", std::move(groups)}};
}

const std::string& ownSchema() {
  static const std::string text = schemaOf(Catalogue()).dump();
  return text;
}

const std::string& ownHash() {
  static const std::string hash = schemaOf(Catalogue())["catalogue"];
  return hash;
}

}  // namespace schema
