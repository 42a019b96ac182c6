// A hash of all settings, to tell whether two gateways have the same.
#pragma once

#include <string>

#include "lparams/catalogue/catalogue.h"

namespace schema {

/// Hashes (text/hash.h) of a line "GROUP.NAME=LENGTH:VALUE" for each parameter: in the order of the
/// catalogue, users in the order of the list, each value as the settings file spells it and its
/// length in bytes, those too that are in the file only. Equal for equal settings, however a file
/// spells them.
struct SettingsHash {
  std::string open;   ///< of all but the secrets: a short one could be guessed from its hash
  std::string whole;  ///< of all

  bool operator==(const SettingsHash&) const = default;
};

/// Takes the lock of one group at a time, and of its parameters.
SettingsHash settingsHashOf(const LPARAMS::Server::Catalogue& settings);

}  // namespace schema
