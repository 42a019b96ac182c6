#include "tests/module/scripted_document.h"

#include <charconv>
#include <deque>
#include <string_view>

#include "platform/markup_document.h"
#include "tests/module/call_log.h"

namespace host {
namespace {

// What follows a text in the parser's buffer; a caller that reads on takes it along.
constexpr std::string_view BEHIND_TEXT = "0</Param>";

ScriptedDocument script;
std::deque<std::string> buffers;  // never moved: texts point into them

ChPair handOut(const std::string& text) {
  if (text.empty()) return {};
  const std::string& buffer = buffers.emplace_back(text).append(BEHIND_TEXT);
  return {buffer.data(), buffer.data() + text.size()};
}

const Element& elementOf(const MLDoc::Token& token) {
  return *static_cast<const Element*>(token.element);
}

const std::vector<Element>& childrenOf(const MLDoc::Token& token) {
  return token.element == nullptr ? script.elements : elementOf(token).children;
}

std::string_view view(const ChPair& chars) {
  return {chars.begin, static_cast<size_t>(chars.end - chars.begin)};
}

}  // namespace

ScriptedDocument& document() { return script; }

}  // namespace host

MLDoc::~MLDoc() { release(); }

bool MLDoc::load(const char* path) {
  host::record(std::string("parse ") + path);
  tree_ = &host::script;
  if (host::script.onLoad) host::script.onLoad();
  return host::script.loads;
}

void MLDoc::release() {
  if (tree_ == nullptr) return;
  host::record("release");
  for (std::string& buffer : host::buffers) buffer.assign(buffer.size(), '?');
  tree_ = nullptr;
}

MLDoc::ChildIterator::ChildIterator(MLDoc* document, Token& current)
    : document_(document), current_(current), parent_(current) {}

// Finds its place again by the caller's token, so a token that serves two levels goes astray.
bool MLDoc::ChildIterator::operator()(const ChPair& tag) {
  const auto& children = host::childrenOf(parent_);
  const bool started = last_.element != nullptr;
  bool behindLast = !started;
  for (const host::Element& child : children) {
    if (behindLast && child.tag == host::view(tag)) {
      current_.element = last_.element = &child;
      return true;
    }
    if (&child == current_.element) behindLast = true;
  }
  return false;
}

ChPair MLDoc::getAttributeValue(const Token& element, const ChPair& name) {
  return host::view(name) == "Name" ? host::handOut(host::elementOf(element).name) : ChPair{};
}

ChPair MLDoc::content(Token& element) {
  if (host::script.onContent) host::script.onContent(host::elementOf(element));
  return host::handOut(host::elementOf(element).text);
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
  const auto [stop, error] = std::from_chars(begin, end, out);
  return error == std::errc() && stop == end;
}
