// The fuzzer's entry points. With "--seeds DIRECTORY" the program only writes its seeds there, and
// the dictionary of the catalogue beside it.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include "tests/prove/fuzz/settings_text.h"
#include "tests/prove/fuzz/target.h"

namespace {

void writeSeeds(const std::string& directory) {
  size_t number = 0;
  for (const std::string& seed : fuzz::seeds()) {
    std::ofstream(directory + "/seed-" + std::to_string(number++), std::ios::binary) << seed;
  }
  std::ofstream dictionary(directory + ".dict");
  for (std::string name : fuzz::names()) {
    for (size_t at = 0; (at = name.find_first_of("\\\"", at)) != name.npos; at += 2) {
      name.insert(at, "\\");
    }
    dictionary << '"' << name << "\"\n";
  }
  for (const char* token : {"=", "\\x0a", "/", "end=\\x0a", "|", "\\xEF\\xBB\\xBF", "USERS[", "].",
                            "<", "</", "/>", "<![CDATA[", "]]>", "&amp;", "{", "}", "null", ":"}) {
    dictionary << '"' << token << "\"\n";
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* count, char*** arguments) {
  if (*count == 3 && std::strcmp((*arguments)[1], "--seeds") == 0) {
    writeSeeds((*arguments)[2]);
    std::_Exit(0);
  }
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::tryOnce({reinterpret_cast<const char*>(data), size});
  return 0;
}
