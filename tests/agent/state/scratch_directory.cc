#include "tests/agent/state/scratch_directory.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

namespace agent_testing {
namespace {

namespace fs = std::filesystem;

std::string makeDirectory() {
  std::string path = fs::temp_directory_path() / "lparams-XXXXXX";
  if (::mkdtemp(path.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category(), path);
  }
  return path;
}

std::string wholeText(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return std::move(text).str();
}

std::vector<std::string> rawNames(const std::string& path) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(path)) names.push_back(entry.path().filename());
  std::ranges::sort(names);
  return names;
}

void replaceTime(std::string& name) {
  constexpr std::string_view FORM = "00000000T000000Z";
  std::string form = name;
  for (char& c : form) {
    if (c >= '0' && c <= '9') c = '0';
  }
  if (const size_t at = form.find(FORM); at != std::string::npos) {
    name.replace(at, FORM.size(), "TIME");
  }
}

}  // namespace

ScratchDirectory::ScratchDirectory() : path(makeDirectory()) {}

ScratchDirectory::~ScratchDirectory() {
  std::error_code ignored;
  fs::remove_all(path, ignored);
}

void ScratchDirectory::write(const std::string& name, const std::string& text) const {
  remove(name);
  std::ofstream file(at(name), std::ios::binary);
  file << text;
  if (!file.flush()) throw std::runtime_error(at(name) + " cannot be written");
}

std::string ScratchDirectory::text(const std::string& name) const {
  const auto status = fs::symlink_status(at(name));
  if (!fs::exists(status)) return "(absent)";
  return fs::is_regular_file(status) ? wholeText(at(name)) : "(not a file)";
}

std::string ScratchDirectory::unsealedText(const std::string& name) const {
  const std::string whole = text(name);
  return whole.substr(0, whole.rfind("#xxh3-128="));
}

void ScratchDirectory::remove(const std::string& name) const { fs::remove_all(at(name)); }

mode_t ScratchDirectory::mode(const std::string& name) const {
  return static_cast<mode_t>(fs::symlink_status(at(name)).permissions());
}

gid_t ScratchDirectory::group(const std::string& name) const {
  struct stat status {};
  return ::lstat(at(name).c_str(), &status) == 0 ? status.st_gid : static_cast<gid_t>(-1);
}

std::vector<std::string> ScratchDirectory::names() const {
  std::vector<std::string> names = rawNames(path);
  for (std::string& name : names) replaceTime(name);
  return names;
}

std::string ScratchDirectory::textOfOnly(const std::string& beginning) const {
  std::vector<std::string> names = rawNames(path);
  std::erase_if(names, [&](const std::string& name) { return !name.starts_with(beginning); });
  if (names.size() != 1)
    return std::string("(").append(std::to_string(names.size())) + " such files)";
  return text(names.front());
}

std::vector<std::string> ScratchDirectory::contents() const {
  std::vector<std::string> contents = rawNames(path);
  for (std::string& name : contents) name += ": " + text(name);
  return contents;
}

std::string exampleSettings(int port) {
  const std::string text = wholeText(SOURCE_DIR "/examples/localsettings.ini");
  const std::string line = "IKE_PORT=500\n";
  std::string changed = text;
  changed.replace(text.find(line), line.size(), "IKE_PORT=" + std::to_string(port) + "\n");
  return changed;
}

}  // namespace agent_testing
