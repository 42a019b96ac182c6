// The text that somebody edits.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "bridge/named_values.h"
#include "client/catalogue_view.h"
#include "documents/document.h"

namespace client {

/// A document of lines with these values, and above the first of each parameter what it means.
/// Secrets show only if `secrets`.
std::string editableText(const bridge::NamedValues& values, const CatalogueView& catalogue,
                         bool secrets);

/// The text with each mistake as a remark above its line; those without a place come first.
/// REQUIRES: there are no remarks in the text.
std::string withRemarks(std::string_view text, const std::vector<documents::Mistake>& mistakes);

/// The text without such remarks.
std::string withoutRemarks(std::string_view text);

}  // namespace client
