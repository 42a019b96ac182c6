// Parameters in words, for messages.
#pragma once

#include <string>

#include "lparams/params/param.h"

namespace agent {

/// The legal values: "a number from 5 to 600", "0 or 1", "one of A, B, C", "text on one line".
/// REQUIRES: a parameter of the catalogue that is not a group.
std::string legalValuesOf(const LPARAMS::Server::Param& param);

/// The value as the settings file spells it; "(hidden)" for a secret. Takes the parameter's lock.
std::string valueOf(LPARAMS::Server::Param& param);

}  // namespace agent
