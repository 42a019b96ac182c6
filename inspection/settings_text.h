// Settings as the text of a settings file, and back.
#pragma once

#include <memory>
#include <string>

#include "lparams/catalogue/catalogue.h"

namespace inspection {

/// The text as a save writes it.
std::string textOf(LPARAMS::Server::ParamGroup& settings);

/// What a load of the text gives; its reports go nowhere. Thread-safe. REQUIRES: a text that a
/// start would take.
std::shared_ptr<LPARAMS::Server::Catalogue> settingsIn(const std::string& text);

}  // namespace inspection
