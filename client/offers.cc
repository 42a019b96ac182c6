#include "client/offers.h"

#include <algorithm>
#include <functional>
#include <map>
#include <stdexcept>

#include "client/failure.h"
#include "client/odd_texts.h"
#include "client/revision.h"
#include "schema/schema.h"

namespace client {
namespace {

constexpr std::string_view USERS = "USERS.";

using Words = std::vector<std::string>;

bool isPlain(const std::string& word) {
  const auto isControl = [](char c) { return (c >= 0 && c < ' ') || c == '\x7f'; };
  return std::ranges::none_of(word, isControl) && showsAsItIs(word);
}

std::string schemaOf(Context& context, Words& users) {
  try {
    Store& store = context.store();
    std::string schema = store.schema();
    for (const bridge::NamedValue& value : store.get({"USERS"}).values) {
      if (!value.running || takeApart(value.name).member != "NAME") continue;
      users.push_back(*value.running);
    }
    return schema;
  } catch (const Failure&) {
    return schema::ownSchema();
  }
}

Words operator+(Words some, const Words& more) {
  some.insert(some.end(), more.begin(), more.end());
  return some;
}

Words valuesOf(const CatalogueView::Json& param) {
  Words values;
  if (param.contains("values")) {
    for (const auto& value : param.at("values")) values.push_back(value.at("name"));
  } else if (param.at("default").is_boolean()) {
    values = {"0", "1"};
  }
  return values;
}

}  // namespace

Offers::Offers(Context& context) : context_(context), catalogue_(schemaOf(context, users_)) {}

Words Offers::groups() const {
  Words groups;
  for (const std::string& name : catalogue_.names()) {
    std::string group = takeApart(name).group;
    if (groups.empty() || groups.back() != group) groups.push_back(std::move(group));
  }
  return groups;
}

Words Offers::usersInList() const {
  Words names;
  for (const std::string& user : users_) names.push_back("USERS[" + user + "]");
  return names;
}

Words Offers::fields() const {
  Words fields;
  for (const std::string& name : catalogue_.names()) {
    if (name.starts_with(USERS)) fields.push_back(name.substr(USERS.size()));
  }
  return fields;
}

/// The fields of a user only where it is named: there may be thousands.
Words Offers::parameters(const std::string& word) const {
  Words names;
  for (const std::string& name : catalogue_.names()) {
    if (!name.starts_with(USERS)) names.push_back(name);
  }
  for (const std::string& user : usersInList()) {
    const std::string owner = user + ".";
    if (!word.starts_with(owner)) {
      names.push_back(owner);
      continue;
    }
    for (const std::string& field : fields()) names.push_back(owner + field);
  }
  return names;
}

Offer Offers::assignment(const std::string& word, bool ofUser) const {
  const size_t end = word.find('=');
  if (end == std::string::npos) {
    Offer offer{.words = ofUser ? fields() : parameters(word)};
    for (std::string& name : offer.words) {
      if (!name.ends_with('.')) name += '=';
    }
    return offer;
  }
  const std::string begin = word.substr(0, end + 1);
  if (word.starts_with(begin + "@") && !word.starts_with(begin + "@@")) {
    return {.file = true, .kept = begin + "@"};
  }
  const std::string name = word.substr(0, end);
  const auto* const param = catalogue_.find(ofUser ? std::string(USERS) + name : name);
  Offer offer;
  if (param == nullptr) return offer;
  for (const std::string& value : valuesOf(*param)) offer.words.push_back(begin + value);
  return offer;
}

Words Offers::revisions() const {
  try {
    std::string leftOut;
    Words numbers;
    for (const bridge::Revision& revision : historyOf(context_.agent(), leftOut)) {
      numbers.push_back(std::to_string(revision.number));
    }
    return numbers;
  } catch (const Failure&) {
    return {};
  }
}

Offer Offers::of(std::string_view kind, const std::string& word) const {
  const auto words = [](Words words) { return Offer{.words = std::move(words)}; };
  const std::map<std::string_view, std::function<Offer()>> kinds = {
      {"FIELD=VALUE", [&] { return assignment(word, true); }},
      {"FILE", [] { return Offer{.file = true}; }},
      {"GLOB", [&] { return words(groups() + parameters(word)); }},
      {"GROUP", [&] { return words(groups() + usersInList()); }},
      {"GROUP.NAME", [&] { return words(parameters(word)); }},
      {"GROUP.NAME=VALUE", [&] { return assignment(word, false); }},
      {"NAME", [&] { return words(groups() + usersInList() + parameters(word)); }},
      {"NEW-NAME", [] { return Offer(); }},
      {"PATH", [] { return Offer{.file = true}; }},
      {"REVISION", [&] { return words(revisions()); }},
      {"SECONDS", [] { return Offer(); }},
      {"TEXT", [] { return Offer(); }},
      {"USER", [&] { return words(users_); }},
  };
  const auto found = kinds.find(kind);
  if (found == kinds.end()) {
    throw std::logic_error("what a " + std::string(kind) + " could be is not known");
  }
  Offer offer = found->second();
  std::erase_if(offer.words,
                [&](const std::string& one) { return !one.starts_with(word) || !isPlain(one); });
  return offer;
}

}  // namespace client
