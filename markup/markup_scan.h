// A look at a markup document before the parser sees it.
#pragma once

#include <cstddef>
#include <string_view>

namespace markup {

/// The deepest nesting of elements in the text, as a parser would meet it: comments, CDATA
/// sections, processing instructions and quoted attribute values hold no elements. A text that is
/// not well formed is measured up to where it stops making sense.
size_t markupDepth(std::string_view text);

}  // namespace markup
