// Names of parameters by a pattern.
#pragma once

#include <string_view>

namespace client {

/// Whether the text is one that the glob stands for, in any case: "*" is any text and "?" any
/// character; brackets are no more than that, since names have them.
bool matchesGlob(std::string_view glob, std::string_view text);

/// Whether the glob stands for the full name of a parameter, for its name without the group or
/// user, or for these.
bool matchesName(std::string_view glob, std::string_view fullName);

}  // namespace client
