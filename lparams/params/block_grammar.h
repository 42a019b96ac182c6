// The grammar of the settings file: what marks a key, a block and its end.
//
//     /GROUP=
//         NAME=value
//     end=
#pragma once

#include <string_view>

namespace LPARAMS::Server {

/// What a line is indented by, once per nesting level.
inline constexpr std::string_view LEVEL = "    ";

/// Closes a key. What follows up to the end of the line is the value.
inline constexpr char KEY_MARK = '=';

/// Stands before the name of a block.
inline constexpr char BLOCK_MARK = '/';

/// The key that closes the innermost block.
inline constexpr std::string_view END_KEY = "end";

/// Only editors put it there, and only before the first key of a file.
inline constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";

/// The text without the white space and control bytes in front of it.
constexpr std::string_view withoutIndent(std::string_view text) {
  while (!text.empty() && static_cast<unsigned char>(text.front()) <= ' ') text.remove_prefix(1);
  return text;
}

/// A key of a block, without what precedes it on its line.
struct Key {
  std::string_view name;
  bool namesBlock = false;  ///< marked as one; matters only if nothing has the name
};

/// What the text in front of a KEY_MARK says. The name is a part of the text.
constexpr Key keyOf(std::string_view text) {
  text = withoutIndent(text);
  const bool namesBlock = text.starts_with(BLOCK_MARK);
  if (namesBlock) text.remove_prefix(1);
  return {text, namesBlock};
}

}  // namespace LPARAMS::Server
