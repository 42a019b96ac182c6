// The forms that a file of settings can have, each checked in a file of its own.
#pragma once

#include "checking/check.h"

namespace checking {

/// How much of a value or a name is shown, in bytes.
inline constexpr size_t MAX_SHOWN = 200;

Checked checkSettingsFile(std::string_view text, size_t kept);

/// Settings of an earlier version, as they are imported at a first start.
Checked checkLegacy(std::string_view text, size_t kept);

/// A document as it is applied.
Checked checkDocument(std::string_view text, size_t kept);

}  // namespace checking
