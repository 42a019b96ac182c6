#include "lparams/params/numeric_param.h"

#include "lparams/params/text_reader.h"

namespace LPARAMS::Server {

template <typename T, int TypeId>
bool NumericParam<T, TypeId>::load(std::istream& is) {
  Param::Lock lock(*this);
  extractValue(is, this->value);
  if (!Param::load(is)) return false;
  if (this->value < min) {
    this->value = min;
  } else if (this->value > max) {
    this->value = max;
  }
  return true;
}

template class NumericParam<unsigned short, TYPE_USHORT>;
template class NumericParam<unsigned int, TYPE_UINT>;

}  // namespace LPARAMS::Server
