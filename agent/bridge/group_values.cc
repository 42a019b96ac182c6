#include "agent/bridge/group_values.h"

#include <algorithm>
#include <cstddef>
#include <list>
#include <map>
#include <string_view>

#include "agent/base/log.h"
#include "lparams/catalogue/user_list.h"
#include "lparams/values/values.h"

namespace agent {
namespace {

using namespace LPARAMS::Server;

constexpr size_t MAX_NAMES = 100;     // more than any group has members
constexpr size_t MAX_USER_NAME = 40;  // bytes that are shown

std::vector<std::string> valuesOf(const ParamGroup& group) {
  std::vector<std::string> values;
  values.reserve(group.fileParams.size());
  for (Param* param : group.fileParams) values.push_back(valueText(*param));
  return values;
}

/// Counts and names what differs.
class Changes {
 public:
  void add(const std::string& name) {
    if (++count_ <= MAX_NAMES) names_ += (names_.empty() ? "" : ",") + name;
  }
  bool empty() const { return count_ == 0; }
  std::string text() const {
    if (empty()) return "none";
    if (count_ <= MAX_NAMES) return names_;
    return names_ + ",... (" + std::to_string(count_ - MAX_NAMES) + " more)";
  }

 private:
  std::string names_;
  size_t count_ = 0;
};

bool isPlain(char c) {
  return c > ' ' && c < '\x7f' && std::string_view("[],\"\\").find(c) == std::string_view::npos;
}

/// A name that would be mistaken for something else stands in quotes.
std::string shown(std::string_view user) {
  const std::string name = shortened(user, MAX_USER_NAME);
  return "[" + (std::ranges::all_of(name, isPlain) ? name : quoted(name)) + "]";
}

using Members = std::list<Param*>;

const Members& membersOf(const ParamGroup& group) {
  static const USER_t user;
  return group.getTypeId() == TYPE_USER_LIST ? user.fileParams : group.fileParams;
}

}  // namespace

GroupValues::GroupValues(ParamGroup& group) : group_(group) {
  const basekit::ObjectLevelLockable::Lock lock(group);
  if (group.getTypeId() != TYPE_USER_LIST) {
    entries_.push_back({{}, valuesOf(group)});
    return;
  }
  for (USER_t* user : static_cast<ParamVector<USER_t>&>(group).items) {
    entries_.push_back({valueText(user->NAME), valuesOf(*user)});
  }
}

std::string GroupValues::changesUntil(const GroupValues& later) const {
  const bool isList = group_.getTypeId() == TYPE_USER_LIST;
  Changes changes;
  std::multimap<std::string_view, const Entry*> before;  // equal names in the order of the list
  for (const Entry& entry : entries_) before.emplace(entry.name, &entry);
  for (const Entry& entry : later.entries_) {
    const auto found = before.lower_bound(entry.name);
    if (found == before.end() || found->first != entry.name) {
      changes.add(shown(entry.name) + " added");
      continue;
    }
    const std::string prefix = isList ? shown(entry.name) + "." : "";
    auto was = found->second->values.begin();
    auto is = entry.values.begin();
    for (const Param* member : membersOf(group_)) {
      if (*was++ != *is++) changes.add(prefix + member->name);
    }
    before.erase(found);
  }
  for (const auto& [name, entry] : before) changes.add(shown(name) + " removed");
  if (changes.empty() && entries_ != later.entries_) changes.add("order");
  return changes.text();
}

}  // namespace agent
