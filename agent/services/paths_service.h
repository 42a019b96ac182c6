// The agent's side of the paths service.
#pragma once

#include <string>

namespace agent {

/// Sets what systemVarDir() answers; a missing "/" at the end is added. Call once, before the first
/// module is loaded.
void setSystemVarDir(std::string directory);

}  // namespace agent
