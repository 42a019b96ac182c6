// The documents that are made of the catalogue.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "tools/catalogue_rows.h"

namespace tools {

/// docs/catalogue.md.
void printMarkdown(std::ostream& output, const std::vector<Group>& groups);

/// A page for browsers: the frame, a whole page, with the groups in the place of its line
/// "<!-- groups -->". Well-formed as XML where the frame is. Throws std::runtime_error if the frame
/// has no such line.
void printPage(std::ostream& output, const std::string& frame, const std::vector<Group>& groups);

}  // namespace tools
