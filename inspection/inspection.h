// What a load would make of the text of a settings file.
#pragma once

#include <string>
#include <string_view>

#include "inspection/finding.h"
#include "lparams/catalogue/catalogue.h"

namespace inspection {

struct Inspection {
  std::string incomplete;  ///< why no start takes the text for a whole one; empty if one does
  bool loaded = false;     ///< the load reads it to its end
  Findings findings = {};
};

/// Loads the text as the module loads its file, with the module's own classes, and tells what it
/// reports and what it changes in silence, with places. `settings` has the values afterwards.
///
/// Takes time and memory in proportion to the text. Thread-safe, but no other load may run in this
/// process with the same objects. REQUIRES: nobody else uses `settings`, which are at their
/// defaults.
Inspection inspect(std::string_view text, LPARAMS::Server::Catalogue& settings);

}  // namespace inspection
