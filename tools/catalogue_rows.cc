#include "tools/catalogue_rows.h"

#include <algorithm>

#include "lparams/catalogue/catalogue.h"
#include "lparams/values/values.h"
#include "lparams/values/visit.h"

namespace tools {
namespace {

using namespace LPARAMS::Server;

struct ClassName {
  std::string operator()(const BoolParam&) const { return "BoolParam"; }
  std::string operator()(const PortParam&) const { return "PortParam"; }
  std::string operator()(const UIntParam&) const { return "UIntParam"; }
  std::string operator()(const EnumParam&) const { return "EnumParam"; }
  std::string operator()(const StStParam&) const { return "StStParam"; }
  std::string operator()(const QcdSParam&) const { return "QcdSParam"; }
};

struct Names {
  std::vector<NamedNumber> operator()(const EnumParam& param) const {
    std::vector<NamedNumber> names;
    for (const Variant* row = param.variants; row->name != nullptr; ++row) {
      names.push_back({row->name, std::to_string(row->value)});
    }
    return names;
  }
  std::vector<NamedNumber> operator()(const Param& /*param*/) const { return {}; }
};

std::vector<Row> rowsOf(const ParamGroup& group) {
  std::vector<Row> rows;
  for (Param* param : group.fileParams) {
    Row row{.name = param->name,
            .meaning = std::string(meaningOf(*param)),
            .className = visit(*param, ClassName()),
            .typeId = std::to_string(param->getTypeId()),
            .byDefault = valueText(*param),
            .limits = {},
            .names = visit(*param, Names()),
            .travels = std::ranges::find(group.wireParams, param) != group.wireParams.end()};
    if (row.names.empty()) row.limits = legalValues(*param);
    rows.push_back(std::move(row));
  }
  return rows;
}

}  // namespace

std::vector<Group> catalogueRows() {
  std::vector<Group> groups;
  const Catalogue catalogue;
  for (const ParamGroup* group : catalogue.groups()) {
    if (group == catalogue.USERS) {
      groups.push_back({group->name, std::string(USER_t::GROUP_NAME), rowsOf(USER_t())});
    } else {
      groups.push_back({group->name, {}, rowsOf(*group)});
    }
  }
  return groups;
}

}  // namespace tools
