// Takes a change of settings back, and nothing else.
#pragma once

#include <string>
#include <vector>

#include "lparams/catalogue/catalogue.h"

namespace agent {

/// Gives each parameter that a change has set from what it has in `before` to what it has in
/// `after` the value before, unless it has another value by now; users that the change has added
/// and removed likewise. Where the list of users is the one from after the change, its order goes
/// back, too. Returns the names of what stays because it was changed again.
///
/// REQUIRES: nobody else uses any of the three.
std::vector<std::string> goBack(LPARAMS::Server::Catalogue& before,
                                LPARAMS::Server::Catalogue& after,
                                LPARAMS::Server::Catalogue& settings);

}  // namespace agent
