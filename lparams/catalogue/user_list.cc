#include "lparams/catalogue/user_list.h"

#include "lparams/params/param_vector_impl.h"

namespace LPARAMS::Server {

template class ParamVector<USER_t>;

USER_t* listAdd(ParamVector<USER_t>& list) { return list.append(); }

void listDel(ParamVector<USER_t>& list, USER_t* entry) {
  std::erase(list.items, entry);
  delete entry;
}

void listClear(ParamVector<USER_t>& list) { list.destroyEntries(); }

}  // namespace LPARAMS::Server
