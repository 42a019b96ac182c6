// Numbers with a range, and the names under which groups declare numbers and flags.
#pragma once

#include <limits>
#include <stdexcept>

#include "lparams/params/simple_param.h"

namespace LPARAMS::Server {

/// The value that a numeric parameter starts with. REQUIRES: it fits the parameter's type.
struct Default {
  unsigned int value;
};

/// The inclusive limits of a numeric parameter. The store attaches no unit to them. REQUIRES: they
/// fit the parameter's type.
struct Range {
  unsigned int min;
  unsigned int max;
};

/// The two together, as a row of the catalogue states them for a number of type `T`. A row that
/// contradicts itself does not compile.
template <typename T>
struct Bounds {
  consteval Bounds(Default initial, Range range) : initial(initial), range(range) {
    if (range.min > range.max) throw std::invalid_argument("the range is empty");
    if (range.max > std::numeric_limits<T>::max()) {
      throw std::invalid_argument("the range does not fit the type");
    }
    if (initial.value < range.min || initial.value > range.max) {
      throw std::invalid_argument("the default is out of the range");
    }
  }

  Default initial;
  Range range;
};

/// An unsigned number whose range is enforced when it is loaded from the settings file, and only
/// there.
///
/// Kept oddities, for whoever looks for the missing checks: a number out of range in the file is
/// moved to the nearer limit without a report, and a number from the bridge is taken, saved and
/// sent as it stands until the next load.
template <typename T, int TypeId>
class NumericParam : public SimpleParam<T, TypeId> {
 public:
  NumericParam(ParamGroup& group, const char* name, Default initial, Range range,
               Lists lists = FileAndWire)
      : SimpleParam<T, TypeId>(group, name, static_cast<T>(initial.value), lists),
        min(static_cast<T>(range.min)),
        max(static_cast<T>(range.max)) {}

  /// A row of the catalogue.
  NumericParam(ParamGroup& group, Label label, Bounds<T> bounds, Lists lists = FileAndWire)
      : NumericParam(group, label.name(), bounds.initial, bounds.range, lists) {}

  bool load(std::istream& is) override;

  const T min;
  const T max;
};

extern template class NumericParam<unsigned short, TYPE_USHORT>;
extern template class NumericParam<unsigned int, TYPE_UINT>;

/// A TCP or UDP port number.
class PortParam : public NumericParam<unsigned short, TYPE_USHORT> {
 public:
  using NumericParam::NumericParam;
};

/// An unsigned count, size or time.
class UIntParam : public NumericParam<unsigned int, TYPE_UINT> {
 public:
  using NumericParam::NumericParam;
};

/// A flag, "0" or "1" in the text.
class BoolParam : public SimpleParam<bool, TYPE_BOOL> {
 public:
  using SimpleParam::SimpleParam;
};

}  // namespace LPARAMS::Server
