// A parameter that holds one value of a plain type.
#pragma once

#include <string>
#include <utility>

#include "lparams/params/label.h"
#include "lparams/params/param_group.h"

namespace LPARAMS::Server {

/// `T` is the type of the value, `TypeId` what getTypeId answers. Built with its default and added
/// to its group in one declaration.
///
/// Kept oddity: a plain string is saved as it is but loaded as one word, skipping white space, so
/// an empty one takes the first word of the line below. Settings that may be empty or hold blanks
/// use StStParam instead.
template <typename T, int TypeId>
class SimpleParam : public Param {
 public:
  SimpleParam(ParamGroup& group, const char* name, T initial, Lists lists = FileAndWire);

  /// A row of the catalogue.
  SimpleParam(ParamGroup& group, Label label, T initial, Lists lists = FileAndWire)
      : SimpleParam(group, label.name(), std::move(initial), lists) {}

  int getTypeId() const override { return TypeId; }
  bool save(std::ostream& os, int indent) override;
  bool load(std::istream& is) override;
  bool write(CommandStreamOut& out) override;
  bool read(CommandStreamIn& in) override;

  T value;  ///< protected by the parameter's lock
};

extern template class SimpleParam<bool, TYPE_BOOL>;
extern template class SimpleParam<unsigned short, TYPE_USHORT>;
extern template class SimpleParam<unsigned int, TYPE_UINT>;
extern template class SimpleParam<int, TYPE_INT>;
extern template class SimpleParam<std::string, TYPE_STRING>;
extern template class SimpleParam<std::string, TYPE_SECRET>;

}  // namespace LPARAMS::Server
