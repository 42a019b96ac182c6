// Settings as the text of a settings file.
#pragma once

#include <string>

#include "bridge/named_values.h"

namespace documents {

/// The text that a save of these running values writes: the whole file, byte for byte. Values that
/// are missing are left out. REQUIRES: the values are in the order of the catalogue, those of a
/// user beside each other, and none holds a line end or a zero byte.
std::string settingsText(const std::vector<bridge::NamedValue>& values);

}  // namespace documents
