// One of the named values of a variant table.
#pragma once

#include <stdexcept>

#include "lparams/params/simple_param.h"
#include "lparams/params/variant.h"

namespace LPARAMS::Server {

/// A default and the table that it is taken from, as a row of the catalogue states them. A default
/// without a name, or a table that is not one, does not compile.
struct Choice {
  template <size_t N>
  consteval Choice(int32_t defaultValue, const Variant (&table)[N])
      : defaultValue(defaultValue), variants(table) {
    if (!isVariantTable(table)) throw std::invalid_argument("the table is not one of variants");
    // Not by findVariant: with its checks on, GCC takes no found row for a constant.
    for (size_t row = 0; row + 1 < N; ++row) {
      if (table[row].value == defaultValue) return;
    }
    throw std::invalid_argument("the default is not in the table");
  }

  int32_t defaultValue;
  const Variant* variants;
};

/// An integer that the settings file spells by its name; on the bridge it travels as a number.
///
/// Kept oddities: a value from the bridge is not checked, and saving a value without a name sets it
/// to the default in memory as well, for every text that is built, so that file and memory agree.
class EnumParam : public SimpleParam<int, TYPE_INT> {
 public:
  /// REQUIRES: the table outlives the parameter.
  EnumParam(ParamGroup& group, const char* name, int defaultValue, const Variant* variants,
            Lists lists = FileAndWire)
      : SimpleParam(group, name, defaultValue, lists),
        defaultValue(defaultValue),
        variants(variants) {}

  /// A row of the catalogue.
  EnumParam(ParamGroup& group, Label label, Choice choice, Lists lists = FileAndWire)
      : EnumParam(group, label.name(), choice.defaultValue, choice.variants, lists) {}

  bool save(std::ostream& os, int indent) override;

  /// Takes the first piece of the line, split at "|", that names a variant. A line without one is
  /// reported and leaves the default. Pieces are not trimmed; numbers are not names.
  bool load(std::istream& is) override;

  const int32_t defaultValue;
  const Variant* const variants;  ///< closed by a null name; not owned
};

}  // namespace LPARAMS::Server
