#include "tests/module/temp_directory.h"

#include <gtest/gtest.h>
#include <limits.h>
#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string_view>
#include <system_error>
#include <utility>

namespace host {
namespace {

[[noreturn]] void fail(const std::string& what) {
  throw std::system_error(errno, std::generic_category(), what);
}

std::string makeDirectory() {
  std::string path = testing::TempDir() + "lparams-XXXXXX";
  if (mkdtemp(path.data()) == nullptr) fail(path);
  return path + "/";
}

}  // namespace

TempDirectory::TempDirectory() : path(makeDirectory()) {}

TempDirectory::~TempDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(path, ignored);
}

std::string readFile(const std::string& path) {
  std::ifstream file(path);
  if (!file) fail(path);
  std::ostringstream text;
  text << file.rdbuf();
  return std::move(text).str();
}

void writeFile(const std::string& path, const std::string& text) {
  std::ofstream file(path);
  file << text;
  file.flush();
  if (!file) fail(path);
}

bool exists(const std::string& path) { return std::filesystem::exists(path); }

mode_t modeOf(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) fail(path);
  return status.st_mode & 07777;
}

bool isOpen(const std::string& path) {
  for (const auto& descriptor : std::filesystem::directory_iterator("/proc/self/fd")) {
    char target[PATH_MAX];
    const ssize_t size = readlink(descriptor.path().c_str(), target, sizeof target);
    if (size > 0 && path == std::string_view(target, static_cast<size_t>(size))) return true;
  }
  return false;
}

size_t openDescriptors() {
  using Entries = std::filesystem::directory_iterator;
  return static_cast<size_t>(std::distance(Entries("/proc/self/fd"), Entries()));
}

}  // namespace host
