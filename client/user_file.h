// Files that the user names on the command line.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace client {

/// The whole file; throws Failure with the path if it cannot be read or is larger than the limit.
std::string readUserFile(const std::string& path, size_t limit);

/// The same, where the path "-" stands for the standard input.
std::string readUserInput(const std::string& path, size_t limit);

/// The files NAME.conf of a directory, as its path and the name, in the order of the names' bytes;
/// hidden ones are left out. The path itself if it is no directory. Throws Failure with the path.
std::vector<std::string> configurationFiles(const std::string& path);

/// What messages call that.
std::string inputName(const std::string& path);

/// Writes a file in one step: whoever opens it gets the old text or the new one, whole, also after
/// a power cut. A file that is there is replaced where its links lead to, and keeps its owner and
/// mode; a new one has the mode 0600. Throws Failure with the path.
void replaceUserFile(const std::string& path, std::string_view text);

enum class Existing { Refused, Replaced };

/// Writes a file in one step that only its owner can read, from its first moment on. Throws Failure
/// with the path; nothing has changed then. What is no regular file, such as a link, is not
/// replaced.
void writePrivateFile(const std::string& path, std::string_view text, Existing existing);

}  // namespace client
