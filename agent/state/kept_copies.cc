#include "agent/state/kept_copies.h"

#include <dirent.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <system_error>
#include <vector>

#include "agent/state/durable_file.h"

namespace agent {
namespace {

constexpr size_t KEPT = 20;  // of a kind

struct Closer {
  void operator()(DIR* directory) const { (void)::closedir(directory); }
};

/// The names in the path's directory that begin with the path's own and a dot, oldest first: they
/// end with a time. Without a look at the files, whose inodes may be too large for one in 32 bit.
std::vector<std::string> copiesOf(const std::string& path) {
  const std::filesystem::path whole = path;
  const std::string beginning = whole.filename().string() + ".";
  const std::unique_ptr<DIR, Closer> directory(::opendir(whole.parent_path().c_str()));
  std::vector<std::string> names;
  if (!directory) return names;
  while (const dirent* const entry = ::readdir(directory.get())) {
    const std::string name = entry->d_name;
    if (name.starts_with(beginning)) names.push_back((whole.parent_path() / name).string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

/// What became of the file, by the name of a copy: all before the time; empty if it has none.
std::string kindOf(const std::string& path, const std::string& copy) {
  const size_t end = copy.find("-20", path.size());
  return end == std::string::npos ? std::string() : copy.substr(0, end);
}

}  // namespace

std::string keepCopy(const std::string& path, std::string_view what, std::string_view text) {
  const std::string kind = path + "." + std::string(what);
  for (const std::string& copy : copiesOf(path)) {
    if (kindOf(path, copy) != kind) continue;
    try {
      if (readFile(copy, text.size() + 1) == text) return copy;
    } catch (const std::system_error&) {  // then it is none that could be relied upon
    }
  }
  return writeNewFile(nameAside(path, what), text);
}

void forgetOldCopies(const std::string& path) {
  std::map<std::string, std::vector<std::string>> kinds;
  for (const std::string& copy : copiesOf(path)) {
    const std::string kind = kindOf(path, copy);
    if (!kind.empty()) kinds[kind].push_back(copy);
  }
  for (const auto& [kind, copies] : kinds) {
    for (size_t i = 0; i + KEPT < copies.size(); ++i) (void)::unlink(copies[i].c_str());
  }
}

}  // namespace agent
