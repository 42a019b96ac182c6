// The list of users, and the operations with which the agent's own code changes it.
#pragma once

#include "lparams/catalogue/user_entry.h"
#include "lparams/params/module_export.h"
#include "lparams/params/param_vector.h"

namespace LPARAMS::Server {

extern template class ParamVector<USER_t>;

// The three operations take no lock: the caller keeps other threads away from the list meanwhile.

/// Appends a new entry at its defaults and returns it. The list owns it.
LPARAMS_EXPORT USER_t* listAdd(ParamVector<USER_t>& list);

/// Removes every occurrence of the entry from the list and destroys the entry.
/// Kept oddity, for callers with an entry of their own: it is destroyed also when it was not in the
/// list. Null is allowed and changes nothing.
LPARAMS_EXPORT void listDel(ParamVector<USER_t>& list, USER_t* entry);

/// Destroys every entry and empties the list.
LPARAMS_EXPORT void listClear(ParamVector<USER_t>& list);

}  // namespace LPARAMS::Server
