// The text of a settings file, and whether it is whole.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace inspection {

/// Upper limit of a settings file, in bytes.
inline constexpr size_t MAX_SETTINGS_SIZE = 16 * 1024 * 1024;

/// What keeps the text from being a whole settings file, in words; empty if it is one. A whole file
/// begins with the root's head, behind an optional byte-order mark, closes every block, ends with
/// the root's end line, and holds no zero byte. Reads as the module does: keys up to the next "=",
/// over line ends, without the white space before them; a number that is missing in the next line
/// that is not blank, whatever that is. What the module knows is a block, or a value, with and
/// without the mark of a block, everything else is a block with it only.
std::string incompleteBecause(std::string_view text);

/// The same, and where.
struct Incompleteness {
  std::string reason = {};
  size_t offset = 0;  ///< of the first byte that is wrong, or the size where something is missing
};
Incompleteness incompleteness(std::string_view text);

/// The text behind the byte-order mark that some editors put in front.
std::string_view withoutByteOrderMark(std::string_view text);

}  // namespace inspection
