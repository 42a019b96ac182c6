// Texts from elsewhere of which a message shows the beginning.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace text {

inline constexpr size_t MAX_FOREIGN = 200;  ///< bytes of a foreign text that a message shows

/// The text, cut off after so many bytes: for texts that come from a file or a client.
std::string shortened(std::string_view foreign, size_t limit = MAX_FOREIGN);

/// The same as inQuotes() has it.
std::string quoted(std::string_view foreign);

/// What stands in the place of a text that may hold a secret: "(12 bytes, not shown)".
std::string notShown(std::string_view foreign);

}  // namespace text
