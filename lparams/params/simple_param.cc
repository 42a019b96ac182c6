#include "lparams/params/simple_param.h"

#include <utility>

#include "lparams/params/text_reader.h"
#include "lparams/params/text_writer.h"

namespace LPARAMS::Server {

template <typename T, int TypeId>
SimpleParam<T, TypeId>::SimpleParam(ParamGroup& group, const char* name, T initial, Lists lists)
    : Param(name), value(std::move(initial)) {
  group.add(*this, lists);
}

template <typename T, int TypeId>
bool SimpleParam<T, TypeId>::save(std::ostream& os, int indent) {
  Lock lock(*this);
  putLine(os, indent, name, "=", textOf(value));
  return true;
}

template <typename T, int TypeId>
bool SimpleParam<T, TypeId>::load(std::istream& is) {
  Lock lock(*this);
  extractValue(is, value);
  return Param::load(is);
}

template <typename T, int TypeId>
bool SimpleParam<T, TypeId>::write(CommandStreamOut& out) {
  Lock lock(*this);
  put(out, value);
  return true;
}

template <typename T, int TypeId>
bool SimpleParam<T, TypeId>::read(CommandStreamIn& in) {
  Lock lock(*this);
  take(in, value);
  return true;
}

template class SimpleParam<bool, TYPE_BOOL>;
template class SimpleParam<unsigned short, TYPE_USHORT>;
template class SimpleParam<unsigned int, TYPE_UINT>;
template class SimpleParam<int, TYPE_INT>;
template class SimpleParam<std::string, TYPE_STRING>;
template class SimpleParam<std::string, TYPE_SECRET>;

}  // namespace LPARAMS::Server
