// A private directory for one test, and the files in it.
#pragma once

#include <sys/stat.h>

#include <string>

namespace host {

/// Created empty, with mode 0700; removed with all that is in it.
class TempDirectory {
 public:
  TempDirectory();
  ~TempDirectory();

  TempDirectory(const TempDirectory&) = delete;
  TempDirectory& operator=(const TempDirectory&) = delete;

  const std::string path;  ///< ends in "/"
};

/// The whole text of the file. Throws std::system_error if it cannot be read.
std::string readFile(const std::string& path);

/// Creates the file or replaces its text. Throws std::system_error.
void writeFile(const std::string& path, const std::string& text);

bool exists(const std::string& path);

/// The permission bits of the file. Throws std::system_error.
mode_t modeOf(const std::string& path);

/// Whether this process has the file open. The path is the whole one, without links.
bool isOpen(const std::string& path);

/// How many files this process has open.
size_t openDescriptors();

}  // namespace host
