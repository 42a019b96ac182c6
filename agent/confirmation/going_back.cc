#include "agent/confirmation/going_back.h"

#include <algorithm>
#include <utility>

#include "editing/copy_group.h"
#include "editing/parameters.h"
#include "lparams/values/values.h"

namespace agent {
namespace {

using namespace LPARAMS::Server;
using editing::Parameters;
using Place = std::pair<std::string, size_t>;

bool sameValues(const ParamGroup& one, const ParamGroup& other) {
  return std::ranges::equal(one.fileParams, other.fileParams,
                            [](Param* a, Param* b) { return valueText(*a) == valueText(*b); });
}

std::vector<Place> placesIn(Catalogue& settings) {
  Parameters parameters(settings);
  std::vector<Place> places;
  for (const USER_t* user : settings.userList.items) places.push_back(parameters.placeOf(*user));
  return places;
}

class GoingBack {
 public:
  GoingBack(Catalogue& before, Catalogue& after, Catalogue& settings)
      : before_(before),
        after_(after),
        settings_(settings),
        was_(before),
        set_(after),
        is_(settings) {}

  std::vector<std::string> run() {
    const auto was = before_.groups();
    const auto set = after_.groups();
    const auto is = settings_.groups();
    for (size_t i = 0; i < was.size(); ++i) {
      if (was[i] != before_.USERS) members(was[i]->name, *was[i], *set[i], is[i]);
    }
    const bool sameList = placesIn(settings_) == placesIn(after_);
    users();
    if (sameList) restoreOrder();
    return std::move(stays_);
  }

 private:
  /// `is` may be null: it is not there any more.
  void members(const std::string& owner, const ParamGroup& was, const ParamGroup& set,
               ParamGroup* is) {
    auto setParam = set.fileParams.begin();
    for (Param* wasParam : was.fileParams) {
      const std::string before = valueText(*wasParam);
      const std::string after = valueText(**setParam++);
      if (before == after) continue;
      Param* const param = is == nullptr ? nullptr : is->getParam(wasParam->name);
      const std::string now = param == nullptr ? std::string() : valueText(*param);
      if (param != nullptr && now == before) continue;
      if (param != nullptr && now == after) {
        editing::copyRecord(*wasParam, *param);
      } else {
        stays_.push_back(owner + "." + wasParam->name);
      }
    }
  }

  void users() {
    std::vector<USER_t*> removed;
    for (USER_t* set : after_.userList.items) {
      const Place place = set_.placeOf(*set);
      USER_t* const is = is_.at(place);
      if (const USER_t* const was = was_.at(place); was != nullptr) {
        members(set_.nameOf(*set), *was, *set, is);
      } else if (is != nullptr && sameValues(*set, *is)) {
        removed.push_back(is);
      } else if (is != nullptr) {
        stays_.push_back(set_.nameOf(*set));
      }
    }
    std::vector<USER_t*> missing;  // of before
    for (USER_t* was : before_.userList.items) {
      const Place place = was_.placeOf(*was);
      if (set_.at(place) != nullptr) continue;
      USER_t* const is = is_.at(place);
      if (is == nullptr) {
        missing.push_back(was);
      } else if (!sameValues(*was, *is)) {
        stays_.push_back(was_.nameOf(*was));
      }
    }
    for (USER_t* user : removed) listDel(settings_.userList, user);
    for (USER_t* user : missing) editing::copyGroup(*user, *listAdd(settings_.userList));
  }

  void restoreOrder() {
    Parameters now(settings_);
    std::vector<USER_t*> ordered;
    for (const Place& place : placesIn(before_)) {
      if (USER_t* const user = now.at(place); user != nullptr) ordered.push_back(user);
    }
    // Those that stay although they were added.
    for (USER_t* user : settings_.userList.items) {
      if (std::ranges::find(ordered, user) == ordered.end()) ordered.push_back(user);
    }
    settings_.userList.items = std::move(ordered);
  }

  Catalogue& before_;
  Catalogue& after_;
  Catalogue& settings_;
  Parameters was_;
  Parameters set_;
  Parameters is_;
  std::vector<std::string> stays_;
};

}  // namespace

std::vector<std::string> goBack(Catalogue& before, Catalogue& after, Catalogue& settings) {
  return GoingBack(before, after, settings).run();
}

}  // namespace agent
