#include "client/steps.h"

#include <algorithm>
#include <map>
#include <set>

#include "client/catalogue_view.h"
#include "client/failure.h"

namespace client {
namespace {

using bridge::Change;
using bridge::NamedValue;
using bridge::NamedValues;

constexpr int RETRIES = 3;
constexpr const char* NAME = "NAME";

/// What "USERS[bob]" and "USERS[bob].NAME" call the user; empty for other parameters.
std::string userOf(const std::string& name) {
  return name.starts_with("USERS[") ? takeApart(name).user : std::string();
}

/// The settings that there are, by their names.
class Present {
 public:
  explicit Present(const NamedValues& now) {
    for (const NamedValue& value : now.values) {
      byName_.emplace(value.name, &value);
      const std::string user = userOf(value.name);
      if (user.empty() || !value.running) continue;
      std::vector<const NamedValue*>& fields = fields_[user];
      if (fields.empty()) users_.push_back(user);
      fields.push_back(&value);
    }
  }

  /// In the order of the list; one that shares its name with another goes by its index.
  const std::vector<std::string>& users() const { return users_; }

  bool isThere(const std::string& user) const { return fields_.contains(user); }

  /// REQUIRES: the user is there.
  const std::vector<const NamedValue*>& fieldsOf(const std::string& user) const {
    return fields_.at(user);
  }

  const NamedValue* find(const std::string& name) const {
    const auto found = byName_.find(name);
    return found == byName_.end() ? nullptr : found->second;
  }

 private:
  std::map<std::string, const NamedValue*> byName_;
  std::vector<std::string> users_;
  std::map<std::string, std::vector<const NamedValue*>> fields_;  // by user
};

class Steps {
 public:
  Steps(const Wanted& wanted, const NamedValues& now)
      : wanted_(wanted),
        now_(now),
        present_(now),
        wantedUsers_(wanted.users.begin(), wanted.users.end()),
        absentUsers_(wanted.absent.begin(), wanted.absent.end()) {
    for (const auto& [name, value] : wanted.values) values_[name] = value;
  }

  std::vector<Change> make() {
    removeUsers();
    addUsers();
    for (const auto& [name, value] : wanted_.values) {
      const NamedValue* const present = present_.find(name);
      if (present != nullptr && present->running == value) continue;
      if (!isRenewed(userOf(name))) add({Change::Set, name, value});
    }
    if (wanted_.exclusive) setDefaults();
    return std::move(steps_);
  }

 private:
  void add(Change step) { steps_.push_back(std::move(step)); }

  bool isRenewed(const std::string& user) const { return renewed_.contains(user); }

  bool isUnwanted(const std::string& user) const {
    if (absentUsers_.contains(user)) return true;
    return (wanted_.exclusive || wanted_.onlyUsers) && !wantedUsers_.contains(user);
  }

  void removeUsers() {
    std::vector<std::string> rest;  // of those that there are
    for (const std::string& user : present_.users()) {
      if (isUnwanted(user)) {
        add({Change::RemoveUser, user});
      } else {
        rest.push_back(user);
      }
    }
    if (!wanted_.exactOrder) return;
    // A user can only be appended: all go that do not stand where they shall.
    const auto [out, unused] = std::ranges::mismatch(rest, wanted_.users);
    for (auto user = out; user != rest.end(); ++user) {
      renewed_.insert(*user);
      add({Change::RemoveUser, *user});
    }
  }

  void addUsers() {
    for (const std::string& user : wanted_.users) {
      if (present_.isThere(user) && !isRenewed(user)) continue;
      add({Change::AddUser, user});
      if (isRenewed(user)) setFields(user);
    }
  }

  /// Of a user who was removed to be appended.
  void setFields(const std::string& user) {
    for (const NamedValue* value : present_.fieldsOf(user)) {
      if (takeApart(value->name).member == NAME) continue;
      const auto wanted = values_.find(value->name);
      if (wanted != values_.end()) {
        add({Change::Set, value->name, wanted->second});
      } else if (!wanted_.exclusive) {
        add({Change::Set, value->name, *value->running});
      }
    }
  }

  void setDefaults() {
    for (const NamedValue& value : now_.values) {
      if (values_.contains(value.name) || !value.byDefault) continue;
      const std::string user = userOf(value.name);
      if (user.empty()) {
        if (value.running != value.byDefault) add({Change::Set, value.name, *value.byDefault});
        continue;
      }
      if (!wantedUsers_.contains(user) || isRenewed(user) || takeApart(value.name).member == NAME)
        continue;
      if (value.running && value.running != value.byDefault) {
        add({Change::Set, value.name, *value.byDefault});
      }
    }
  }

  const Wanted& wanted_;
  const NamedValues& now_;
  const Present present_;
  const std::set<std::string> wantedUsers_;
  const std::set<std::string> absentUsers_;
  std::map<std::string, std::string> values_;  // wanted ones, by name
  std::set<std::string> renewed_;              // users that are removed and appended
  std::vector<Change> steps_;
};

/// Of the groups that the steps change.
std::vector<bridge::GroupRevision> revisionsFor(const std::vector<Change>& steps,
                                                const NamedValues& now) {
  std::set<std::string> groups;
  for (const Change& step : steps) {
    groups.insert(step.kind == Change::Set ? takeApart(step.name).group : "USERS");
  }
  std::vector<bridge::GroupRevision> revisions;
  for (const bridge::GroupRevision& revision : now.revisions) {
    if (groups.contains(revision.group)) revisions.push_back(revision);
  }
  return revisions;
}

/// Those of users who were removed to be appended, and had values all the same.
void addFormerValues(Done& done, const NamedValues& now) {
  const Present before(now);
  for (NamedValue& value : done.values.values) {
    const NamedValue* const former = value.before ? nullptr : before.find(value.name);
    if (former != nullptr) value.before = former->running;
  }
}

}  // namespace

std::vector<Change> stepsTo(const Wanted& wanted, const NamedValues& now) {
  return Steps(wanted, now).make();
}

Done change(Store& store, const std::function<std::vector<Change>(const NamedValues&)>& stepsFrom,
            const std::function<NamedValues(const bridge::NamedChanges&)>& write) {
  for (int retries = RETRIES;; --retries) {
    const NamedValues now = store.get({});
    Done done{.steps = stepsFrom(now)};
    if (done.steps.empty()) return done;
    try {
      done.values = write({revisionsFor(done.steps, now), done.steps});
      addFormerValues(done, now);
      return done;
    } catch (const Conflict&) {
      if (retries == 0) throw;
    }
  }
}

Done change(Store& store, const std::function<std::vector<Change>(const NamedValues&)>& stepsFrom) {
  return change(store, stepsFrom,
                [&](const bridge::NamedChanges& changes) { return store.set(changes); });
}

}  // namespace client
