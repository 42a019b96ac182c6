// What a load would make of the text of a settings file.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "inspection/finding.h"
#include "lparams/catalogue/catalogue.h"
#include "lparams/values/values.h"

namespace inspection {

/// What is left out of an inspection, and what is too much for the settings.
struct Limits {
  size_t findings = Findings::KEPT;
  size_t users = LPARAMS::Server::MAX_USERS;
};

struct Inspection {
  std::string incomplete;  ///< why no start takes the text for a whole one; empty if one does
  bool loaded = false;     ///< the load reads it to its end
  Findings findings = {};
};

/// What a text names: a parameter, or the entry of a user.
struct Taken {
  LPARAMS::Server::ParamGroup* owner = nullptr;  ///< of the settings: a group, or a user
  LPARAMS::Server::Param* param = nullptr;       ///< null for the entry of a user as a whole
  Place place = {};                              ///< of the value, or of the entry's head
};

/// Loads the text as the module loads its file, with the module's own classes, and tells what it
/// reports and what it changes in silence, with places. `settings` has the values afterwards.
/// `taken`, if there is one to append to, gets what the text names, in its order.
///
/// Takes time and memory in proportion to the text. Thread-safe, but no other load may run in this
/// process with the same objects. REQUIRES: nobody else uses `settings`, which are at their
/// defaults.
Inspection inspect(std::string_view text, LPARAMS::Server::Catalogue& settings, Limits limits = {},
                   std::vector<Taken>* taken = nullptr);

}  // namespace inspection
