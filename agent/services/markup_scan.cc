#include "agent/services/markup_scan.h"

#include <algorithm>

namespace agent {
namespace {

constexpr size_t END = std::string_view::npos;

/// The position behind the next `mark`, or END.
size_t behind(std::string_view text, size_t from, std::string_view mark) {
  const size_t at = text.find(mark, from);
  return at == END ? END : at + mark.size();
}

/// The position of the ">" that closes the tag around `at`; quoted values may hold one of their
/// own.
size_t endOfTag(std::string_view text, size_t at) {
  while ((at = text.find_first_of("\"'>", at)) != END && text[at] != '>') {
    at = behind(text, at + 1, text.substr(at, 1));
  }
  return at;
}

}  // namespace

size_t markupDepth(std::string_view text) {
  size_t depth = 0;
  size_t deepest = 0;
  size_t at = 0;
  while (at != END && (at = text.find('<', at)) != END) {
    const std::string_view tag = text.substr(at);
    if (tag.starts_with("<!--")) {
      at = behind(text, at + 4, "-->");
    } else if (tag.starts_with("<![CDATA[")) {
      at = behind(text, at + 9, "]]>");
    } else if (tag.starts_with("<?")) {
      at = behind(text, at + 2, "?>");
    } else if (tag.starts_with("<!")) {
      at = behind(text, at + 2, ">");
    } else if (tag.starts_with("</")) {
      if (depth > 0) --depth;
      at = behind(text, at + 2, ">");
    } else {
      deepest = std::max(deepest, ++depth);
      at = endOfTag(text, at);
      if (at != END && text[at - 1] == '/') --depth;
    }
  }
  return deepest;
}

}  // namespace agent
