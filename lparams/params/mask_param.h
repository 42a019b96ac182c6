// A set of flags.
#pragma once

#include "lparams/params/enum_param.h"

namespace LPARAMS::Server {

/// A bit set that the settings file spells as the names of its flags, joined by "|".
///
/// Kept oddities: bits without a name live in memory and on the bridge but are dropped from the
/// file, and an empty set is saved as the empty text, which loads as the default.
class MaskParam : public EnumParam {
 public:
  using EnumParam::EnumParam;

  int getTypeId() const override { return TYPE_MASK; }
  bool save(std::ostream& os, int indent) override;
  bool load(std::istream& is) override;
};

}  // namespace LPARAMS::Server
