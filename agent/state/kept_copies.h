// The copies that are kept of files which are to be replaced.
#pragma once

#include <string>
#include <string_view>

namespace agent {

/// Keeps a text under `path`, what became of it and the time: "PATH.edited-20261120T114501Z". A
/// text that has been kept so already is not kept twice. Returns the name. Throws
/// std::system_error.
std::string keepCopy(const std::string& path, std::string_view what, std::string_view text);

/// Removes all but the newest 20 of each kind of copy of the path. Says nothing where it cannot.
/// REQUIRES: there is something better than the copies.
void forgetOldCopies(const std::string& path);

}  // namespace agent
