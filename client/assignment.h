// Assignments of the command line.
#pragma once

#include <string>

#include "lparams/values/values.h"

namespace client {

/// NAME=VALUE of the command line.
struct Assignment {
  std::string name;
  std::string value;
};

/// Splits at the first "=". Throws Failure if there is none.
Assignment parseAssignment(const std::string& text);

/// Stores what `value` stands for. Throws Failure if it is not legal, with the parameter
/// unchanged; `fullName` is what the message calls it. REQUIRES: a parameter of the catalogue that
/// is not a group.
void assign(LPARAMS::Server::Param& param, const std::string& value, const std::string& fullName);

}  // namespace client
