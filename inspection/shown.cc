#include "inspection/shown.h"

#include <algorithm>

#include "lparams/params/block_grammar.h"
#include "lparams/params/variant.h"
#include "lparams/values/values.h"
#include "text/shortened.h"

namespace inspection {
namespace {

using namespace LPARAMS::Server;

constexpr size_t MAX_NAME = 64;   // bytes; longer than any
constexpr size_t MAX_TEXT = 200;  // bytes

bool hasFormOfName(std::string_view key) {
  return key.size() <= MAX_NAME && std::ranges::all_of(key, [](char c) {
           return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
         });
}

}  // namespace

Shown::Shown(const Catalogue& catalogue) {
  const auto add = [this](const ParamGroup& group) {
    names_.emplace_back(group.name);
    for (const Param* param : group.fileParams) {
      names_.emplace_back(param->name);
      if (isSecret(*param)) secrets_.emplace_back(param->name);
    }
  };
  for (const ParamGroup* group : catalogue.groups()) add(*group);
  add(USER_t());
}

std::string Shown::name(std::string_view key) const {
  const std::string_view word = key.substr(0, key.find_last_not_of(" \t") + 1);
  const auto isWord = [&](std::string_view name) { return equalNames(word, name); };
  const bool shown = hasFormOfName(key) || std::ranges::any_of(names_, isWord);
  return shown ? std::string(key.substr(0, MAX_TEXT)) : text::notShown(key);
}

std::string Shown::value(std::string_view value) const {
  return upTo(secretIn(value.substr(0, MAX_TEXT + 1)), value);
}

std::string Shown::text(std::string_view text) const {
  const std::string_view beginning = text.substr(0, MAX_TEXT + 1);
  const size_t mark = beginning.find(KEY_MARK);
  return upTo(std::min(secretIn(beginning), mark == std::string_view::npos ? mark : mark + 1),
              text);
}

/// Where a secret can begin.
size_t Shown::secretIn(std::string_view text) const {
  size_t first = std::string_view::npos;
  for (const std::string_view secret : secrets_) {
    const size_t at = text.find(secret);
    if (at != std::string_view::npos) first = std::min(first, at + secret.size());
  }
  return first;
}

std::string Shown::upTo(size_t end, std::string_view text) {
  if (end != std::string_view::npos) return std::string(text.substr(0, end)) + HIDDEN;
  if (text.size() <= MAX_TEXT) return std::string(text);
  return std::string(text.substr(0, MAX_TEXT)) + "...";
}

}  // namespace inspection
