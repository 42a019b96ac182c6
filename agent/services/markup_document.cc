// The markup parser that the platform offers to modules, over RapidXML.
#include "platform/markup_document.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <iterator>
#include <memory>
#include <rapidxml/rapidxml.hpp>
#include <string>
#include <string_view>

#include "agent/services/markup_report.h"
#include "agent/services/markup_scan.h"

namespace {

// The parser recurses at each level and keeps the whole document in memory.
constexpr size_t MAX_SIZE = 1024 * 1024;  // bytes
constexpr size_t MAX_DEPTH = 64;          // nested elements

using Node = rapidxml::xml_node<>;

agent::MarkupReport g_report;

struct Tree {
  std::string text;  // parsed in place; every ChPair points into it
  rapidxml::xml_document<> document;
};

const Tree& treeOf(const void* tree) { return *static_cast<const Tree*>(tree); }

std::string_view view(const ChPair& chars) {
  return {chars.begin, static_cast<size_t>(chars.end - chars.begin)};
}

/// Throws why the document is not taken, and remembers it.
[[noreturn]] void refuse(const std::string& reason) {
  g_report.failure = reason;
  throw TTT(reason);
}

const Node* nodeOf(const MLDoc::Token& token) { return static_cast<const Node*>(token.element); }

}  // namespace

const agent::MarkupReport& agent::markupReport() { return g_report; }

bool MLDoc::load(const char* path) {
  release();
  std::ifstream file(path, std::ios::binary);
  if (!file) return false;
  auto tree = std::make_unique<Tree>();
  tree->text.resize(MAX_SIZE + 1);
  file.read(tree->text.data(), static_cast<std::streamsize>(tree->text.size()));
  tree->text.resize(static_cast<size_t>(file.gcount()));
  if (file.bad()) return false;
  g_report = {g_report.documentsRead + 1, {}, {}};

  if (tree->text.size() > MAX_SIZE) {
    refuse("the document is larger than " + std::to_string(MAX_SIZE) + " bytes");
  }
  if (agent::markupDepth(tree->text) > MAX_DEPTH) {
    refuse("the document is nested deeper than " + std::to_string(MAX_DEPTH) + " elements");
  }
  try {
    tree->document.parse<rapidxml::parse_validate_closing_tags>(tree->text.data());
  } catch (const rapidxml::parse_error& error) {
    const char* const begin = tree->text.data();
    const char* const where = error.where<char>();
    refuse(std::string(error.what()) + " at byte " + std::to_string(where - begin) + ", line " +
           std::to_string(1 + std::count(begin, where, '\n')));
  }
  if (const Node* const top = tree->document.first_node()) {
    g_report.topElement.assign(top->name(), top->name_size());
  }
  tree_ = tree.release();
  return true;
}

void MLDoc::release() {
  delete static_cast<Tree*>(tree_);
  tree_ = nullptr;
}

MLDoc::~MLDoc() { release(); }

MLDoc::ChildIterator::ChildIterator(MLDoc* document, Token& current)
    : document_(document), current_(current), parent_(current) {}

bool MLDoc::ChildIterator::operator()(const ChPair& tag) {
  if (document_->tree_ == nullptr) return false;
  const std::string_view name = view(tag);
  const Node* parent =
      parent_.element != nullptr ? nodeOf(parent_) : &treeOf(document_->tree_).document;
  const Node* found = last_.element == nullptr
                          ? parent->first_node(name.data(), name.size())
                          : nodeOf(last_)->next_sibling(name.data(), name.size());
  if (found == nullptr) return false;
  last_.element = found;
  current_ = last_;
  return true;
}

ChPair MLDoc::getAttributeValue(const Token& element, const ChPair& name) {
  const std::string_view wanted = view(name);
  const auto* attribute = nodeOf(element)->first_attribute(wanted.data(), wanted.size());
  if (attribute == nullptr) return {};
  return {attribute->value(), attribute->value() + attribute->value_size()};
}

ChPair MLDoc::content(Token& element) {
  const Node* node = nodeOf(element);
  // An element's own value is its first run of text; one in a CDATA section is a child of its own.
  if (node->value_size() == 0 && node->first_node() != nullptr &&
      node->first_node()->type() == rapidxml::node_cdata) {
    node = node->first_node();
  }
  return {node->value(), node->value() + node->value_size()};
}

int MLDoc::getInt(const ChPair& text) const {
  int number = 0;
  (void)strtoint(text.begin, text.end, number);
  return number;
}

bool streq(const char* left, unsigned leftLength, const char* right, unsigned rightLength) {
  return std::string_view(left, leftLength) == std::string_view(right, rightLength);
}

bool strtoint(const char* begin, const char* end, int& out) {
  int number = 0;
  const auto result = std::from_chars(begin, end, number);
  if (result.ec != std::errc() || result.ptr != end) return false;
  out = number;
  return true;
}
