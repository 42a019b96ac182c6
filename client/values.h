// The values of parameters as texts of the command line.
#pragma once

#include <string>

#include "lparams/params/param.h"

namespace client {

/// NAME=VALUE of the command line.
struct Assignment {
  std::string name;
  std::string value;
};

/// Splits at the first "=". Throws Failure if there is none.
Assignment parseAssignment(const std::string& text);

/// What stands in the place of a secret that is not to be seen.
inline constexpr const char* HIDDEN = "(hidden)";

bool isSecret(const LPARAMS::Server::Param& param);

/// The value as setValue takes it: numbers in decimal, flags as 0 and 1, enumerations by their
/// names, strings and secrets byte for byte. An enumeration whose value has no name gives its
/// number, which setValue refuses. REQUIRES: a parameter of the catalogue that is not a group.
std::string valueText(LPARAMS::Server::Param& param);

/// Stores the value that the text stands for, after checking it more strictly than the bridge,
/// which checks nothing. Throws Failure if it is not legal, with the parameter unchanged;
/// `fullName` is what the message calls it. REQUIRES: as above.
void setValue(LPARAMS::Server::Param& param, const std::string& text, const std::string& fullName);

}  // namespace client
