// A look at the settings file before the module loads it.
#pragma once

#include <string>

namespace agent {

/// Throws std::runtime_error, in words, if there is something at `path` that the module must not be
/// given: anything but a regular file that can be read, or one that it would read for ever (empty
/// or made only of "="). A file that does not exist is fine: then it is a first start.
void checkSettingsFile(const std::string& path);

}  // namespace agent
