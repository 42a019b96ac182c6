#include "markup/tree.h"

#include <utility>

#include "markup/markup_scan.h"

namespace markup {
namespace {

constexpr size_t MAX_DEPTH = 64;  // nested elements: the parser recurses at each level

[[noreturn]] void refuse(const std::string& reason, size_t offset = std::string::npos) {
  throw ParseError{reason, offset};
}

}  // namespace

std::unique_ptr<Tree> parse(std::string text) {
  if (text.size() > MAX_SIZE) {
    refuse("the document is larger than " + std::to_string(MAX_SIZE) + " bytes");
  }
  if (markupDepth(text) > MAX_DEPTH) {
    refuse("the document is nested deeper than " + std::to_string(MAX_DEPTH) + " elements");
  }
  auto tree = std::make_unique<Tree>();
  tree->text = std::move(text);
  try {
    tree->document.parse<rapidxml::parse_validate_closing_tags>(tree->text.data());
  } catch (const rapidxml::parse_error& error) {
    refuse(error.what(), tree->offsetOf(error.where<char>()));
  }
  return tree;
}

}  // namespace markup
