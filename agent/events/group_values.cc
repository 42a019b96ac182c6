#include "agent/events/group_values.h"

#include <list>
#include <map>
#include <string_view>

#include "lparams/catalogue/user_list.h"
#include "lparams/values/values.h"

namespace agent {
namespace {

using namespace LPARAMS::Server;
using bridge::NoticedChange;

std::vector<std::string> valuesOf(const ParamGroup& group) {
  std::vector<std::string> values;
  values.reserve(group.fileParams.size());
  for (Param* param : group.fileParams) values.push_back(valueText(*param));
  return values;
}

/// A user at the defaults, whose members stand for those of all users.
const USER_t& anyUser() {
  static const USER_t user;
  return user;
}

const std::vector<std::string>& userDefaults() {
  static const std::vector<std::string> values = valuesOf(anyUser());
  return values;
}

bool isList(const ParamGroup& group) { return group.getTypeId() == TYPE_USER_LIST; }

const std::list<Param*>& membersOf(const ParamGroup& group) {
  return isList(group) ? anyUser().fileParams : group.fileParams;
}

/// How many entries have each name.
template <typename Entries>
std::map<std::string_view, size_t> countNames(const Entries& entries) {
  std::map<std::string_view, size_t> counts;
  for (const auto& entry : entries) ++counts[entry.name];
  return counts;
}

}  // namespace

GroupValues::GroupValues(ParamGroup& group) : group_(group) {
  const basekit::ObjectLevelLockable::Lock lock(group);
  if (!isList(group)) {
    entries_.push_back({{}, valuesOf(group)});
    return;
  }
  for (USER_t* user : static_cast<ParamVector<USER_t>&>(group).items) {
    entries_.push_back({valueText(user->NAME), valuesOf(*user)});
  }
}

void GroupValues::visitChangesUntil(const GroupValues& later,
                                    const std::function<void(const GroupChange&)>& visit) const {
  std::multimap<std::string_view, size_t> gone;  // places; equal names in the order of the list
  for (size_t i = 0; i < entries_.size(); ++i) gone.emplace(entries_[i].name, i);
  const auto formerNames = countNames(entries_);
  const auto names = countNames(later.entries_);

  bool same = true;
  const auto tell = [&](const GroupChange& change) {
    same = false;
    visit(change);
  };
  for (size_t i = 0; i < later.entries_.size(); ++i) {
    const Entry& entry = later.entries_[i];
    GroupChange change{.group = group_};
    if (isList(group_)) {
      change.user = &entry.name;
      change.index = i;
      change.onlyOfName = names.at(entry.name) == 1;
    }
    const auto found = gone.lower_bound(entry.name);
    const bool isNew = found == gone.end() || found->first != entry.name;
    if (isNew) {
      change.kind = NoticedChange::UserAdded;
      tell(change);
      change.kind = NoticedChange::Value;
    }
    auto was = (isNew ? userDefaults() : entries_[found->second].values).begin();
    auto is = entry.values.begin();
    for (const Param* member : membersOf(group_)) {
      change.member = member;
      change.before = isNew ? nullptr : &*was;
      change.after = &*is;
      const bool told = isNew && member == &anyUser().NAME;  // as the user's
      if (*was++ != *is++ && !told) tell(change);
    }
    if (!isNew) gone.erase(found);
  }
  for (const auto& [name, place] : gone) {
    tell({.kind = NoticedChange::UserRemoved,
          .group = group_,
          .user = &entries_[place].name,
          .index = place,
          .onlyOfName = formerNames.at(name) == 1});
  }
  if (same && entries_ != later.entries_) {
    visit({.kind = NoticedChange::UserOrder, .group = group_});
  }
}

}  // namespace agent
