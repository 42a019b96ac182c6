// The one place that leads from a type identifier to a class.
#pragma once

#include <stdexcept>
#include <string>
#include <type_traits>

#include "lparams/params/enum_param.h"
#include "lparams/params/line_string_param.h"
#include "lparams/params/numeric_param.h"

namespace LPARAMS::Server {

/// Calls the visitor with the parameter, constant or not, as what it is, and returns what it
/// returns. Throws std::logic_error for a class that no row of the catalogue has. The identifier is
/// trusted, because an agent has no type information of the module's objects.
template <typename AnyParam, typename Visitor>
auto visit(AnyParam& param, Visitor&& visitor) {
  const auto as = [&]<typename Class>(std::type_identity<Class>) -> auto& {
    return static_cast<std::conditional_t<std::is_const_v<AnyParam>, const Class, Class>&>(param);
  };
  switch (param.getTypeId()) {
    case TYPE_BOOL:
      return visitor(as(std::type_identity<BoolParam>()));
    case TYPE_USHORT:
      return visitor(as(std::type_identity<PortParam>()));
    case TYPE_UINT:
      return visitor(as(std::type_identity<UIntParam>()));
    case TYPE_INT:
      return visitor(as(std::type_identity<EnumParam>()));
    case TYPE_STRING:
      return visitor(as(std::type_identity<StStParam>()));
    case TYPE_SECRET:
      return visitor(as(std::type_identity<QcdSParam>()));
    default:
      throw std::logic_error(std::string("no class for the type of ") + param.name);
  }
}

}  // namespace LPARAMS::Server
