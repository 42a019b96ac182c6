#include "inspection/shown.h"

#include <algorithm>

#include "lparams/params/block_grammar.h"
#include "lparams/params/variant.h"
#include "lparams/values/values.h"

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
  return shown ? std::string(key.substr(0, MAX_TEXT)) : hidden(key);
}

std::string Shown::hidden(std::string_view key) {
  return std::string("(").append(std::to_string(key.size())).append(" bytes, not shown)");
}

std::string Shown::text(std::string_view text) const {
  text = text.substr(0, MAX_TEXT + 1);
  size_t end = text.find(KEY_MARK);
  if (end != std::string_view::npos) ++end;
  for (const std::string_view secret : secrets_) {
    const size_t at = text.find(secret);
    if (at != std::string_view::npos) end = std::min(end, at + secret.size());
  }
  if (end != std::string_view::npos) return std::string(text.substr(0, end)) + HIDDEN;
  if (text.size() <= MAX_TEXT) return std::string(text);
  return std::string(text.substr(0, MAX_TEXT)) + "...";
}

}  // namespace inspection
