// What differs between two sets of settings.
#pragma once

#include "inspection/finding.h"
#include "lparams/catalogue/catalogue.h"

namespace inspection {

/// Adds a finding of the kind for each parameter whose value is not the same in both, without the
/// values of secrets, and for each user that only one has. Users are compared by name. Takes the
/// locks of the parameters, one at a time. REQUIRES: nobody changes the settings meanwhile.
void addDifferences(LPARAMS::Server::Catalogue& before, LPARAMS::Server::Catalogue& after,
                    Finding::Kind kind, Findings& findings);

}  // namespace inspection
