// What differs between settings and those before them.
#pragma once

#include <vector>

#include "bridge/named_values.h"
#include "lparams/catalogue/catalogue.h"

namespace editing {

/// The values that are not the same in both, secrets too: `before` and `running` of each. A user is
/// the one of that name before. One that was added is a value called "USERS[bob]" whose `running`
/// is empty, and then the `running` of each parameter; one that was removed has `before` in its
/// place. Where the others stand in another order, a value "USERS" without texts says so.
///
/// Takes the parameters' locks. Call it while nobody else writes either of the settings.
std::vector<bridge::NamedValue> changesBetween(LPARAMS::Server::Catalogue& before,
                                               LPARAMS::Server::Catalogue& after);

}  // namespace editing
