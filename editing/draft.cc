#include "editing/draft.h"

#include <algorithm>
#include <utility>

#include "editing/copy_group.h"
#include "editing/shown_name.h"
#include "lparams/values/values.h"
#include "text/escape.h"
#include "text/shortened.h"

namespace editing {
namespace {

using namespace LPARAMS::Server;

bool hasText(const Param& param) {
  return param.getTypeId() == TYPE_STRING || param.getTypeId() == TYPE_SECRET;
}

/// Why the parameter did not take the text.
std::string whyNot(const Param& param, const std::string& text) {
  if (hasText(param) && text.size() > RecordCheck::MAX_TEXT) {
    return "a text of " + std::to_string(text.size()) + " bytes is too long; expected at most " +
           std::to_string(RecordCheck::MAX_TEXT);
  }
  const std::string shown = isSecret(param) ? "the value" : text::inQuotes(text.substr(0, 200));
  return shown + " is not " + legalValues(param);
}

}  // namespace

Draft::Draft(Catalogue& settings, const RecordCheck& check, Users users)
    : check_(check), parameters_(draft_) {
  const auto from = settings.groups();
  const auto to = draft_.groups();
  for (size_t i = 0; i < from.size(); ++i) {
    if (users == WithUsers || from[i] != settings.USERS) copyGroup(*from[i], *to[i]);
  }
}

void Draft::apply(const bridge::Change& change) {
  switch (change.kind) {
    case bridge::Change::Set:
      return set(change);
    case bridge::Change::AddUser:
      return addUser(change.name);
    case bridge::Change::RemoveUser:
      return removeUser(change.name);
  }
}

void Draft::set(const bridge::Change& change) {
  const Parameters::Found found = parameters_.find(change.name);
  if (!found.problem.empty()) return mistakes_.add(found.problem);
  const std::string name = shownName(change.name);
  if (found.param == nullptr) return mistakes_.add(name + ": not a single parameter");
  const std::string before = valueText(*found.param);
  const bool tooLong = hasText(*found.param) && change.value.size() > RecordCheck::MAX_TEXT;
  if (tooLong || !setValue(*found.param, change.value)) {
    return mistakes_.add(name + ": " + whyNot(*found.param, change.value));
  }
  if (!places_.emplace(found.param, touched_.size()).second) return;
  touched_.push_back({found, isNew(found.user) ? std::nullopt : std::optional(before)});
}

void Draft::addUser(const std::string& name) {
  USER_t* const user = listAdd(draft_.userList);
  if (name.size() <= RecordCheck::MAX_TEXT && setValue(user->NAME, name)) {
    added_.push_back(user);
  } else {
    mistakes_.add(shownName("USERS[" + name + "]") + ": " + whyNot(user->NAME, name));
    user->NAME.value = name;  // so that what is said of this user is no mistake too
  }
  parameters_.add(*user);
}

void Draft::removeUser(const std::string& key) {
  const Parameters::Found found = parameters_.findUser(key, "USERS[" + key + "]");
  if (!found.problem.empty()) return mistakes_.add(found.problem);
  parameters_.remove(*found.user);
  removed_.push_back(found.user);
  for (Touched& touched : touched_) {
    if (touched.found.user == found.user) touched.found.param = nullptr;
  }
}

bool Draft::isNew(const USER_t* user) const {
  return user != nullptr && std::ranges::find(added_, user) != added_.end();
}

void Draft::finish() {
  for (USER_t* user : removed_) {
    std::erase(added_, user);
    listDel(draft_.userList, user);
  }
  checkUsers();
  if (mistakes_.empty()) checkSize();
}

/// Two users of one name cannot be made, but those that were there may stay.
void Draft::checkUsers() {
  const auto& users = draft_.userList.items;
  if (!added_.empty() && users.size() > check_.maxUsers()) {
    mistakes_.add("USERS: " + std::to_string(users.size()) +
                  " entries are too many; expected at most " + std::to_string(check_.maxUsers()));
  }
  std::vector<std::pair<const USER_t*, const char*>> named;  // and what a message calls the name
  for (const USER_t* user : added_) named.emplace_back(user, "");
  for (const Touched& touched : touched_) {
    if (touched.found.user == nullptr || touched.found.param != &touched.found.user->NAME) continue;
    if (touched.before && *touched.before != touched.found.user->NAME.value) {
      named.emplace_back(touched.found.user, ".NAME");
    }
  }
  if (named.empty()) return;
  std::map<std::string_view, int> count;
  for (const USER_t* user : users) ++count[user->NAME.value];
  for (const auto& [user, member] : named) {
    const std::string& name = user->NAME.value;
    const std::string subject = shownName(parameters_.nameOf(*user)) + member + ": ";
    if (name.empty()) mistakes_.add(subject + "a user needs a name");
    if (!name.empty() && count[name] > 1) {
      mistakes_.add(subject + "there is a user " + text::quoted(name) + " already");
    }
  }
}

void Draft::checkSize() {
  std::map<std::string_view, size_t> sizes;
  for (ParamGroup* group : changedGroups()) {
    sizes[group->name] = RecordCheck::textSizeOf(*group);
  }
  if (sizes.empty()) return;
  if (const std::string refusal = check_.refusalOfSize(sizes); !refusal.empty()) {
    mistakes_.add(refusal);
  }
}

std::vector<ParamGroup*> Draft::changedGroups() {
  std::vector<ParamGroup*> changed;
  for (ParamGroup* group : draft_.groups()) {
    const bool listChanged = group == draft_.USERS && !(added_.empty() && removed_.empty());
    const auto differs = [&](const Touched& touched) {
      return touched.found.param != nullptr && touched.found.group == group &&
             touched.before != valueText(*touched.found.param);
    };
    if (listChanged || std::ranges::any_of(touched_, differs)) changed.push_back(group);
  }
  return changed;
}

std::vector<bridge::NamedValue> Draft::changedValues(std::shared_ptr<Catalogue> saved) {
  ValueReader reader(parameters_, std::move(saved), true);
  std::vector<bridge::NamedValue> values;
  for (const Touched& touched : touched_) {
    if (touched.found.param == nullptr) continue;
    values.push_back(reader.read(touched.found));
    values.back().before = touched.before;
  }
  return values;
}

}  // namespace editing
