#include "agent/settings_file_check.h"

#include <sys/stat.h>

#include <cerrno>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

namespace agent {
namespace {

[[noreturn]] void refuse(const std::string& path, const std::string& reason) {
  throw std::runtime_error("settings file " + path + " " + reason);
}

/// The module looks for a first key until it finds one: behind an optional byte-order mark there
/// must be something other than "=".
bool holdsKey(std::istream& file) {
  std::string start(3, '\0');
  file.read(start.data(), 3);
  start.resize(static_cast<size_t>(file.gcount()));
  if (start == "\xEF\xBB\xBF") start.clear();
  if (start.find_first_not_of('=') != std::string::npos) return true;
  for (std::istreambuf_iterator<char> at(file), end; at != end; ++at) {
    if (*at != '=') return true;
  }
  return false;
}

}  // namespace

void checkSettingsFile(const std::string& path) {
  struct stat status {};
  if (::lstat(path.c_str(), &status) != 0) {
    if (errno == ENOENT) return;
    refuse(path, "cannot be examined: " + std::generic_category().message(errno));
  }
  if (!S_ISREG(status.st_mode)) refuse(path, "is not a regular file");
  std::ifstream file(path, std::ios::binary);
  if (!file) refuse(path, "cannot be opened: " + std::generic_category().message(errno));
  if (status.st_size == 0) {
    refuse(path, "is empty; restore it, or remove it to start with the defaults");
  }
  if (!holdsKey(file)) {
    refuse(path, "holds no settings; restore it, or remove it to start with the defaults");
  }
}

}  // namespace agent
