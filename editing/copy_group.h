// Values of one catalogue for another.
#pragma once

#include "lparams/catalogue/catalogue.h"
#include "lparams/params/param_group.h"

namespace editing {

/// The group of that name. REQUIRES: there is one.
LPARAMS::Server::ParamGroup& counterpart(const LPARAMS::Server::Catalogue& catalogue,
                                         const LPARAMS::Server::ParamGroup& group);

// Both groups are the same one of two catalogues. The parameters' locks are taken, one by one; the
// caller keeps others away from the group where it has to change as a whole.

/// Copies a value, or those of a group that are on the bridge.
void copyRecord(LPARAMS::Server::Param& from, LPARAMS::Server::Param& to);

/// Copies the group's values, those that are in the file only too.
void copyGroup(LPARAMS::Server::ParamGroup& from, LPARAMS::Server::ParamGroup& to);

/// Copies nothing but those that are in the file only. A list has none.
void copyFileOnly(LPARAMS::Server::ParamGroup& from, LPARAMS::Server::ParamGroup& to);

}  // namespace editing
