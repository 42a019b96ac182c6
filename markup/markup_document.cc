// The markup parser that the platform offers to modules, over RapidXML.
#include "platform/markup_document.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <string>
#include <string_view>

#include "markup/markup_report.h"
#include "markup/text_document.h"
#include "markup/tree.h"

namespace {

using Node = rapidxml::xml_node<>;
using markup::Tree;

markup::MarkupReport g_report;

const Tree& treeOf(const void* tree) { return *static_cast<const Tree*>(tree); }

std::string_view view(const ChPair& chars) {
  return {chars.begin, static_cast<size_t>(chars.end - chars.begin)};
}

/// The reason, with the place in the text if it is of one.
std::string inWords(const markup::ParseError& error, const std::string& text) {
  if (error.offset == std::string::npos) return error.reason;
  const auto where = text.begin() + static_cast<std::ptrdiff_t>(error.offset);
  return error.reason + " at byte " + std::to_string(error.offset) + ", line " +
         std::to_string(1 + std::count(text.begin(), where, '\n'));
}

const Node* nodeOf(const MLDoc::Token& token) { return static_cast<const Node*>(token.element); }

}  // namespace

const markup::MarkupReport& markup::markupReport() { return g_report; }

markup::TextDocument::TextDocument(std::unique_ptr<Tree> tree) { tree_ = tree.release(); }

bool MLDoc::load(const char* path) {
  release();
  std::ifstream file(path, std::ios::binary);
  if (!file) return false;
  std::string text(markup::MAX_SIZE + 1, '\0');  // one byte more tells a larger document
  file.read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<size_t>(file.gcount()));
  if (file.bad()) return false;
  g_report = {g_report.documentsRead + 1, {}, {}};
  try {
    auto tree = markup::parse(text);
    if (const Node* const top = tree->document.first_node()) {
      g_report.topElement.assign(top->name(), top->name_size());
    }
    tree_ = tree.release();
  } catch (const markup::ParseError& error) {
    g_report.failure = inWords(error, text);
    throw TTT(g_report.failure);
  }
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
