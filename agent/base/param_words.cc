#include "agent/base/param_words.h"

#include <sstream>

#include "lparams/params/enum_param.h"
#include "lparams/params/numeric_param.h"

namespace agent {
namespace {

using namespace LPARAMS::Server;

template <typename Numeric>
std::string rangeOf(const Param& param) {
  const auto& numeric = static_cast<const Numeric&>(param);
  return "a number from " + std::to_string(numeric.min) + " to " + std::to_string(numeric.max);
}

std::string namesOf(const Variant* table) {
  std::string names = "one of ";
  for (const Variant* row = table; row->name != nullptr; ++row) {
    if (row != table) names += ", ";
    names += row->name;
  }
  return names;
}

}  // namespace

// The type identifier stands for the class: the agent has no type information of the module's.

std::string legalValuesOf(const Param& param) {
  switch (param.getTypeId()) {
    case TYPE_BOOL:
      return "0 or 1";
    case TYPE_USHORT:
      return rangeOf<PortParam>(param);
    case TYPE_UINT:
      return rangeOf<UIntParam>(param);
    case TYPE_INT:
      return namesOf(static_cast<const EnumParam&>(param).variants);
    default:
      return "text on one line";
  }
}

std::string valueOf(Param& param) {
  if (param.getTypeId() == TYPE_SECRET) return "(hidden)";
  std::ostringstream line;
  (void)param.save(line, 0);
  const std::string text = std::move(line).str();
  const size_t begin = text.find('=') + 1;
  return text.substr(begin, text.size() - begin - 1);
}

}  // namespace agent
