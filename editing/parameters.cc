#include "editing/parameters.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>

#include "editing/shown_name.h"
#include "lparams/values/values.h"
#include "text/escape.h"
#include "text/similar.h"

namespace editing {
namespace {

using namespace LPARAMS::Server;

/// A name taken apart. What it does not have is missing.
struct Pieces {
  std::string_view group;
  std::optional<std::string_view> user;
  std::optional<std::string_view> member;
};

/// Names of parameters hold no bracket and no dot; names of users may hold any byte.
Pieces takeApart(std::string_view name) {
  const size_t open = name.find_first_of("[.");
  if (open == std::string_view::npos) return {name, {}, {}};
  Pieces pieces{name.substr(0, open), {}, {}};
  std::string_view rest = name.substr(open);
  if (const size_t close = rest.rfind(']'); rest[0] == '[' && close != std::string_view::npos) {
    pieces.user = rest.substr(1, close - 1);
    rest.remove_prefix(close + 1);
  }
  if (rest.starts_with('.')) {
    pieces.member = rest.substr(1);
  } else if (!rest.empty()) {
    pieces.member = name;  // nothing is called so
  }
  return pieces;
}

std::optional<size_t> indexIn(std::string_view text) {
  size_t index = 0;
  const char* const end = text.data() + text.size();
  const auto [parsed, error] = std::from_chars(text.data(), end, index);
  if (error != std::errc() || parsed != end) return std::nullopt;
  return index;
}

std::string problem(std::string_view name, const std::string& what) {
  return shownName(name) + ": " + what;
}

}  // namespace

void Parameters::needUsers() {
  if (std::exchange(knowsUsers_, true)) return;
  for (USER_t* user : catalogue_.USERS->items) add(*user);
}

void Parameters::add(USER_t& user) {
  needUsers();
  if (names_.contains(&user)) return;
  const std::string name = valueText(user.NAME);
  users_[name].push_back(&user);
  names_[&user] = name;
}

void Parameters::remove(USER_t& user) {
  needUsers();
  const auto namesakes = users_.find(names_.at(&user));
  std::erase(namesakes->second, &user);
  if (namesakes->second.empty()) users_.erase(namesakes);
  names_.erase(&user);
}

std::string Parameters::nameOf(const USER_t& user) {
  needUsers();
  const std::string& name = names_.at(&user);
  if (!name.empty() && users_.at(name).size() == 1) return "USERS[" + name + "]";
  const auto& items = catalogue_.USERS->items;
  return "USERS[" + std::to_string(std::ranges::find(items, &user) - items.begin()) + "]";
}

std::pair<std::string, size_t> Parameters::placeOf(const USER_t& user) {
  needUsers();
  const std::string& name = names_.at(&user);
  const auto& namesakes = users_.at(name);
  return {name, static_cast<size_t>(std::ranges::find(namesakes, &user) - namesakes.begin())};
}

USER_t* Parameters::at(const std::pair<std::string, size_t>& place) {
  needUsers();
  const auto namesakes = users_.find(place.first);
  if (namesakes == users_.end() || place.second >= namesakes->second.size()) return nullptr;
  return namesakes->second[place.second];
}

Parameters::Found Parameters::find(std::string_view name) {
  const Pieces pieces = takeApart(name);
  const auto groups = catalogue_.groups();
  const auto* const group = std::ranges::find_if(
      groups, [&](const ParamGroup* one) { return pieces.group == one->name; });
  const bool isList = group != groups.end() && *group == catalogue_.USERS;
  if (group == groups.end() || (pieces.user && !isList)) {
    return {.problem = problem(name, "no such parameter" + suggestionFor(name))};
  }
  if (pieces.member && isList && !pieces.user) {
    return {.problem = problem(name, "no such parameter; write USERS[NAME].PARAMETER")};
  }
  Found found{.group = *group};
  if (pieces.user) found = findUser(*pieces.user, name);
  if (!pieces.member || !found.problem.empty()) return found;
  ParamGroup& owner = found.user != nullptr ? *found.user : **group;
  found.param = owner.getParam(std::string(*pieces.member));
  if (found.param == nullptr) {
    return {.problem = problem(name, "no such parameter" + suggestionFor(name))};
  }
  return found;
}

Parameters::Found Parameters::findUser(std::string_view key, std::string_view full) {
  needUsers();
  Found found{.group = catalogue_.USERS};
  const auto& items = catalogue_.USERS->items;
  if (const auto named = users_.find(key); named != users_.end()) {
    if (named->second.size() > 1) {
      return {.problem = problem(full, "several users have this name; give the index")};
    }
    found.user = named->second.front();
  } else if (const auto index = indexIn(key); index && *index < items.size()) {
    found.user = items[*index];
  }
  // One that was removed has no name any more.
  if (found.user == nullptr || !names_.contains(found.user)) {
    return {.problem = problem(full, "no such user" + suggestionFor(full))};
  }
  return found;
}

/// Names like one of a user that is not found.
std::vector<std::string> Parameters::userCandidates(const std::string& name,
                                                    const std::string& user) {
  const size_t tail = name.rfind(']') + 1;
  const Found found = users_.contains(user) ? findUser(user, name) : Found();
  std::vector<std::string> candidates;
  if (found.user != nullptr) {
    const std::string head = name.substr(0, tail) + ".";
    for (const Param* param : found.user->fileParams) candidates.push_back(head + param->name);
    return candidates;
  }
  for (const auto& [unused, of] : names_) {
    if (!of.empty())
      candidates.push_back(std::string("USERS[").append(of) + "]" + name.substr(tail));
  }
  return candidates;
}

/// "; did you mean ...?", or nothing.
std::string Parameters::suggestionFor(std::string_view name) {
  if (suggestionsLeft_ == 0) return {};
  --suggestionsLeft_;
  const Pieces pieces = takeApart(name);
  std::vector<std::string> candidates;
  std::map<std::string, std::string> fullNames;  // of parameters that are called without a group
  if (pieces.user) candidates = userCandidates(std::string(name), std::string(*pieces.user));
  for (const ParamGroup* group : catalogue_.groups()) {
    if (pieces.user) break;
    candidates.emplace_back(group->name);
    if (group == catalogue_.USERS) continue;
    for (const Param* param : group->fileParams) {
      const std::string full = std::string(group->name).append(".") + param->name;
      candidates.push_back(pieces.member ? full : param->name);
      fullNames.emplace(param->name, full);
    }
  }
  std::string found = text::similar(name, candidates);
  if (found.empty()) return {};
  if (fullNames.contains(found)) found = fullNames[found];
  return "; did you mean " + text::escaped(found) + "?";
}

}  // namespace editing
