// Prints the catalogue: every parameter with what the file, the bridge and a client need to know of
// it, taken from the objects as they are built. `./dev catalogue` writes docs/catalogue.md with it,
// and the build the page of the package lparams-doc.
//
// Usage: print_catalogue          as Markdown
//        print_catalogue FRAME    as a page for browsers, into that frame
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>

#include "tools/documents.h"

namespace {

std::string contentOf(const std::string& path) {
  std::ifstream file(path);
  std::string content(std::istreambuf_iterator<char>(file), {});
  if (!file) throw std::runtime_error("cannot read " + path);
  return content;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const auto groups = tools::catalogueRows();
    if (argc > 1) {
      tools::printPage(std::cout, contentOf(argv[1]), groups);
    } else {
      tools::printMarkdown(std::cout, groups);
    }
  } catch (const std::exception& error) {
    std::cerr << "print_catalogue: " << error.what() << '\n';
    return 1;
  }
  return std::cout.flush() ? 0 : 1;
}
