#include "markup/markup_scan.h"

#include <algorithm>

namespace markup {
namespace {

constexpr size_t END = std::string_view::npos;
constexpr std::string_view BLANKS = " \t\r\n";

/// The position behind the next `mark`, or END.
size_t behind(std::string_view text, size_t from, std::string_view mark) {
  const size_t at = text.find(mark, from);
  return at == END ? END : at + mark.size();
}

/// The position of the ">" that closes the tag around `at`, or END. Names may hold quotes: only
/// behind the "=" of an attribute do they enclose a value, which may hold a ">" of its own.
size_t endOfTag(std::string_view text, size_t at) {
  at = text.find_first_of(" \t\r\n/>", at);  // the element's name may also hold a "="
  while ((at = text.find_first_of("=>", at)) != END && text[at] == '=') {
    at = text.find_first_not_of(BLANKS, at + 1);
    if (at == END || (text[at] != '"' && text[at] != '\'')) return END;
    at = behind(text, at + 1, text.substr(at, 1));
  }
  return at;
}

bool isDoctype(std::string_view tag) {
  constexpr std::string_view HEAD = "<!DOCTYPE";
  if (!tag.starts_with(HEAD)) return false;
  tag.remove_prefix(HEAD.size());
  return !tag.empty() && BLANKS.find(tag.front()) != END;
}

/// The position behind the document type around `at`. Its declarations stand in brackets and may
/// hold anything, also what looks like the start of a comment.
size_t behindDoctype(std::string_view text, size_t at) {
  size_t open = 0;
  while ((at = text.find_first_of("[]>", at)) != END && (text[at] != '>' || open > 0)) {
    if (text[at] == '[') ++open;
    if (text[at] == ']' && open > 0) --open;
    ++at;
  }
  return at == END ? END : at + 1;
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
    } else if (isDoctype(tag)) {
      at = behindDoctype(text, at);
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

}  // namespace markup
