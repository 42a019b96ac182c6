// What became of the documents that modules have had parsed.
#pragma once

#include <string>

namespace markup {

/// Of the last document. A module does not tell: it takes one that cannot be parsed for an empty
/// one.
struct MarkupReport {
  int documentsRead = 0;   ///< so far, well formed or not
  std::string failure;     ///< why it could not be parsed; empty if it could
  std::string topElement;  ///< the name of its first element; empty without one
};

/// Filled by the one thread that loads the settings.
const MarkupReport& markupReport();

}  // namespace markup
