// A markup document as the parser has it.
#pragma once

#include <cstddef>
#include <memory>
#include <rapidxml/rapidxml.hpp>
#include <string>
#include <string_view>

namespace markup {

/// Upper limit of a document, in bytes: the parser keeps the whole of it in memory.
inline constexpr size_t MAX_SIZE = 1024 * 1024;

struct Tree {
  std::string text;  ///< parsed in place; every name and value of the tree points into it
  rapidxml::xml_document<> document;

  /// Where in the text that was parsed the name or value begins.
  size_t offsetOf(const char* part) const { return static_cast<size_t>(part - text.data()); }
};

/// Why a text cannot be parsed.
struct ParseError {
  std::string reason;
  size_t offset;  ///< npos if it is the text as a whole
};

/// Parses the text. Throws ParseError if it is not well formed, too large or nested too deep.
std::unique_ptr<Tree> parse(std::string text);

}  // namespace markup
