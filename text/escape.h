// Texts from elsewhere, made fit for a line of a log or of a terminal.
#pragma once

#include <string>
#include <string_view>

namespace text {

/// The text as UTF-8 without control characters: the bytes of every one of them (of ASCII, U+0080
/// to U+009F, ends of lines, marks of direction), and bytes that are not UTF-8, become \xNN.
/// Everything else stays.
std::string escaped(std::string_view text);

/// The same in double quotes, with a backslash before each double quote and backslash.
std::string inQuotes(std::string_view text);

bool isUtf8(std::string_view text);

}  // namespace text
