// Names of parameters and users, as messages show them.
#pragma once

#include <string>
#include <string_view>

namespace editing {

/// Fit for a line, and cut off after 200 bytes. What no name has the form of is not shown, unless
/// it is a user's: it may be a secret that lost its "=". Others than the one who has typed it see
/// the message in the log.
std::string shownName(std::string_view name);

}  // namespace editing
