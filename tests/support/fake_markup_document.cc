// A markup parser that finds nothing in any file, for tests that have no use for the real one.
#include <charconv>
#include <string_view>

#include "platform/markup_document.h"

MLDoc::~MLDoc() = default;
bool MLDoc::load(const char*) { return false; }
ChPair MLDoc::getAttributeValue(const Token&, const ChPair&) { return {}; }
ChPair MLDoc::content(Token&) { return {}; }
int MLDoc::getInt(const ChPair&) const { return 0; }
void MLDoc::release() { tree_ = nullptr; }

MLDoc::ChildIterator::ChildIterator(MLDoc* document, Token& current)
    : document_(document), current_(current), parent_(current) {}
bool MLDoc::ChildIterator::operator()(const ChPair&) { return false; }

bool streq(const char* left, unsigned leftLength, const char* right, unsigned rightLength) {
  return std::string_view(left, leftLength) == std::string_view(right, rightLength);
}

bool strtoint(const char* begin, const char* end, int& out) {
  const auto [stop, error] = std::from_chars(begin, end, out);
  return error == std::errc() && stop == end;
}
