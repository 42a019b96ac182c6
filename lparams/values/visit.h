// The one place that leads from a type identifier to a class.
#pragma once

#include <stdexcept>
#include <string>
#include <type_traits>

#include "lparams/params/enum_param.h"
#include "lparams/params/line_string_param.h"
#include "lparams/params/numeric_param.h"

namespace LPARAMS::Server {

/// The parameter, constant or not, as of the class that its type identifier leads to.
template <typename Class, typename AnyParam>
auto& downCast(AnyParam& param) {
  return static_cast<std::conditional_t<std::is_const_v<AnyParam>, const Class, Class>&>(param);
}

/// Calls the visitor with the parameter, constant or not, as what it is, and returns what it
/// returns. Throws std::logic_error for a class that no row of the catalogue has. The identifier is
/// trusted, because an agent has no type information of the module's objects.
template <typename AnyParam, typename Visitor>
auto visit(AnyParam& param, Visitor&& visitor) {
  switch (param.getTypeId()) {
    case TYPE_BOOL:
      return visitor(downCast<BoolParam>(param));
    case TYPE_USHORT:
      return visitor(downCast<PortParam>(param));
    case TYPE_UINT:
      return visitor(downCast<UIntParam>(param));
    case TYPE_INT:
      return visitor(downCast<EnumParam>(param));
    case TYPE_STRING:
      return visitor(downCast<StStParam>(param));
    case TYPE_SECRET:
      return visitor(downCast<QcdSParam>(param));
    default:
      throw std::logic_error(std::string("no class for the type of ") + param.name);
  }
}

}  // namespace LPARAMS::Server
