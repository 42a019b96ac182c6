#include "client/selection.h"

#include <algorithm>

#include "client/failure.h"

namespace client {
namespace {

constexpr const char* USERS = "USERS";

/// Whether the name is that of the parameter, of its user or of its group.
bool standsFor(const std::string& name, const std::string& parameter) {
  if (!parameter.starts_with(name)) return false;
  if (parameter.size() == name.size()) return true;
  return parameter[name.size()] == '[' ? name == USERS : parameter.rfind('.') == name.size();
}

bool isAmong(const std::string& name, const std::vector<std::string>& names) {
  return std::ranges::find(names, name) != names.end();
}

}  // namespace

void Selection::require() const {
  if (names.empty() == all) return;
  throw Failure(programs::EXIT_USAGE,
                all ? "give names or --all, not both"
                    : "say what: names of parameters, groups or users, or --all");
}

std::vector<bridge::NamedValue> Selection::of(const bridge::NamedValues& values,
                                              Store& store) const {
  if (all) return values.values;
  bridge::Names others;  // a group without members, a user by an index, or a mistake
  std::vector<std::string> known;
  for (const std::string& name : names) {
    const bool found = std::ranges::any_of(
        values.values, [&](const auto& value) { return standsFor(name, value.name); });
    (found ? known : others).push_back(name);
  }
  if (!others.empty()) {
    for (const auto& value : store.get(others).values) known.push_back(value.name);
  }
  std::vector<bridge::NamedValue> selected;
  for (const auto& value : values.values) {
    if (std::ranges::any_of(known, [&](const auto& name) { return standsFor(name, value.name); })) {
      selected.push_back(value);
    }
  }
  return selected;
}

bool Selection::hasAllUsers() const { return all || isAmong(USERS, names); }

bool Selection::hasUser(const std::string& user) const {
  return hasAllUsers() || isAmong(std::string(USERS) + "[" + user + "]", names);
}

}  // namespace client
