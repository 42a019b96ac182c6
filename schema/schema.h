// The catalogue as a document, for those who do not have it as code.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "lparams/catalogue/catalogue.h"

namespace schema {

/// The catalogue as JSON: its hash, and the groups with their parameters in order. Each parameter
/// has its name, type identifier, limits or legal names and numbers, default, whether it is on the
/// bridge or in the file only, and meaning. docs/bridge-protocol.md has the members' names.
nlohmann::ordered_json schemaOf(const LPARAMS::Server::Catalogue& catalogue);

/// The schema of the catalogue that this program is built with, as a text in one line.
const std::string& ownSchema();

/// Its hash: 32 hexadecimal digits (XXH3, 128 bits), the same for everybody whose catalogue encodes
/// records in the same way and takes the same values. Meanings are not part of it.
const std::string& ownHash();

}  // namespace schema
