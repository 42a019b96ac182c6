// The module as a file: what it offers to the process that loads it, and what it needs.
#include <gmock/gmock.h>

#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/module/loaded_module.h"

using testing::ElementsAre;
using testing::IsSubsetOf;

namespace host {
namespace {

const std::vector<std::string> ALLOWED_LIBRARIES = {
    "libstdc++.so.6", "libgcc_s.so.1", "libc.so.6", "libm.so.6",
#if defined(__SANITIZE_ADDRESS__)
    "libasan.so.8",   "libubsan.so.1",
#elif defined(__SANITIZE_THREAD__)
    "libtsan.so.2",
#endif
};

/// What the command prints, line by line. Throws if it fails.
std::vector<std::string> outputOf(const std::string& command) {
  FILE* output = popen(command.c_str(), "r");
  std::vector<std::string> lines;
  char line[4096];
  while (output != nullptr && std::fgets(line, sizeof line, output) != nullptr) {
    lines.emplace_back(line, std::string_view(line).find_last_not_of('\n') + 1);
  }
  if (output == nullptr || pclose(output) != 0) throw std::runtime_error("failed: " + command);
  return lines;
}

/// The names of the dynamic symbols that the module defines, with the type letter of each.
std::vector<std::string> definedSymbols() {
  std::vector<std::string> symbols;
  for (const std::string& line :
       outputOf("nm -D --defined-only -C " + MODULE_FILE + " | LC_ALL=C sort -k3")) {
    symbols.push_back(line.substr(line.find(' ') + 1));
  }
  return symbols;
}

/// The libraries that the module names as needed.
std::vector<std::string> neededLibraries() {
  std::vector<std::string> libraries;
  for (const std::string& line : outputOf("readelf -dW " + MODULE_FILE)) {
    if (line.find("(NEEDED)") == std::string::npos) continue;
    const size_t begin = line.find('[') + 1;
    libraries.push_back(line.substr(begin, line.find(']') - begin));
  }
  return libraries;
}

// A symbol of the unique kind (type letter u) would keep the module from being unloaded.
TEST(ModuleFile, ExportsTheRootItsThreeOperationsAndTheThreeOfTheUserList) {
  EXPECT_THAT(definedSymbols(),
              ElementsAre("T LPARAMS::Server::Server_t::isChanged()",
                          "T LPARAMS::Server::Server_t::load(LPARAMS::Server::LoadLog*)",
                          "T LPARAMS::Server::Server_t::save(std::__cxx11::basic_string<char, "
                          "std::char_traits<char>, std::allocator<char> >*)",
                          "T LPARAMS::Server::listAdd("
                          "LPARAMS::Server::ParamVector<LPARAMS::Server::USER_t>&)",
                          "T LPARAMS::Server::listClear("
                          "LPARAMS::Server::ParamVector<LPARAMS::Server::USER_t>&)",
                          "T LPARAMS::Server::listDel("
                          "LPARAMS::Server::ParamVector<LPARAMS::Server::USER_t>&, "
                          "LPARAMS::Server::USER_t*)",
                          "D LPARAMS::server"));
}

TEST(ModuleFile, NeedsTheStandardLibraryAndNothingElse) {
  EXPECT_THAT(neededLibraries(), IsSubsetOf(ALLOWED_LIBRARIES));
}

}  // namespace
}  // namespace host
