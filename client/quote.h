// Foreign texts in messages and in the output.
#pragma once

#include <string>
#include <string_view>

namespace client {

/// True if the text would leave its line or drive a terminal.
bool hasControlBytes(std::string_view text);

/// The text with every control byte as \xNN; other bytes, UTF-8 for one, stay.
std::string escaped(std::string_view text);

/// The same between double quotes, with quotes and backslashes escaped too.
std::string inQuotes(std::string_view text);

}  // namespace client
