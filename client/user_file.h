// Files that the user names on the command line.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace client {

/// The whole file; throws Failure with the path if it cannot be read or is larger than the limit.
std::string readUserFile(const std::string& path, size_t limit);

/// Writes a file in one step: whoever opens it gets the old text or the new one, whole, also after
/// a power cut. A file that is there is replaced where its links lead to, and keeps its owner and
/// mode; a new one has the mode 0600. Throws Failure with the path.
void replaceUserFile(const std::string& path, std::string_view text);

}  // namespace client
