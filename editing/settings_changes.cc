#include "editing/settings_changes.h"

#include <string>
#include <utility>

#include "editing/parameters.h"
#include "lparams/values/values.h"

namespace editing {
namespace {

using namespace LPARAMS::Server;
using bridge::NamedValue;

class Comparison {
 public:
  Comparison(Catalogue& before, Catalogue& after)
      : before_(before), after_(after), from_(before), to_(after) {}

  std::vector<NamedValue> compare() {
    const auto others = after_.groups();
    size_t i = 0;
    for (ParamGroup* group : before_.groups()) {
      ParamGroup* const other = others[i++];
      if (group != before_.USERS) compareGroups(group->name, *group, *other);
    }
    compareUsers();
    return std::move(changes_);
  }

 private:
  void compareGroups(const std::string& owner, const ParamGroup& before, const ParamGroup& after) {
    auto other = after.fileParams.begin();
    for (Param* param : before.fileParams) {
      std::string was = valueText(*param);
      std::string is = valueText(**other++);
      if (was == is) continue;
      changes_.push_back({.name = owner + "." + param->name,
                          .secret = isSecret(*param),
                          .running = std::move(is),
                          .before = std::move(was)});
    }
  }

  using Side = std::optional<std::string> NamedValue::*;

  void addUser(const std::string& owner, const USER_t& user, Side side) {
    changes_.push_back({.name = owner});
    changes_.back().*side = "";
    for (Param* param : user.fileParams) {
      changes_.push_back({.name = owner + "." + param->name, .secret = isSecret(*param)});
      changes_.back().*side = valueText(*param);
    }
  }

  void compareUsers() {
    std::vector<const USER_t*> stayed;  // in the order of before
    for (USER_t* user : before_.USERS->items) {
      if (const USER_t* const other = to_.at(from_.placeOf(*user)); other != nullptr) {
        stayed.push_back(other);
      } else {
        addUser(from_.nameOf(*user), *user, &NamedValue::before);
      }
    }
    auto next = stayed.begin();
    bool sameOrder = true;
    for (USER_t* user : after_.USERS->items) {
      const USER_t* const was = from_.at(to_.placeOf(*user));
      if (was == nullptr) {
        addUser(to_.nameOf(*user), *user, &NamedValue::running);
      } else {
        compareGroups(to_.nameOf(*user), *was, *user);
        sameOrder = sameOrder && *next++ == user;
      }
    }
    if (!sameOrder) changes_.push_back({.name = before_.USERS->name});
  }

  Catalogue& before_;
  Catalogue& after_;
  Parameters from_;
  Parameters to_;
  std::vector<NamedValue> changes_;
};

}  // namespace

std::vector<NamedValue> changesBetween(Catalogue& before, Catalogue& after) {
  return Comparison(before, after).compare();
}

}  // namespace editing
