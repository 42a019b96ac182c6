// Texts that are fit for one line.
#pragma once

#include <string_view>

namespace client {

/// True if the text would leave its line or drive a terminal.
bool hasControlBytes(std::string_view text);

}  // namespace client
