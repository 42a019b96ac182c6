// Files that survive a power cut: what these functions have returned from is on the disk.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace agent {

// All of them throw std::system_error, naming the path, when the system refuses. None follows a
// symbolic link in the last part of a path.

/// The first `limit` bytes of a regular file; nothing if there is no such file. Refuses anything
/// that is not a regular file.
std::optional<std::string> readFile(const std::string& path, size_t limit);

/// Writes a file with the text and renames it over whatever file is there: at any moment either the
/// old or the new one is there, whole. Its mode is 0600.
void replaceFileAtomically(const std::string& path, std::string_view text);

/// The same with what another regular file holds, however much that is.
void copyFileAtomically(const std::string& from, const std::string& path);

// Both return the name that they have used: `name`, or `name` and a number where that is taken.
// They overwrite nothing.

/// Gives a file another name in its directory.
std::string moveAside(const std::string& path, const std::string& name);

/// Writes a new file with the text.
std::string writeNewFile(const std::string& name, std::string_view text);

/// Removes a file, if there is one.
void removeFile(const std::string& path);

/// Makes an existing file, data and name, survive.
void syncFile(const std::string& path);

/// `path` with what became of the file, and when: "PATH.WHAT-20261120T114501Z".
std::string nameAside(const std::string& path, std::string_view what);

}  // namespace agent
