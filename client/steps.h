// The way from the settings that there are to those that there shall be.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "bridge/named_values.h"
#include "client/store.h"

namespace client {

/// Settings as they shall be.
struct Wanted {
  /// Full names, such as IKE.IKE_PORT or USERS[bob].PMP_TIMEOUT, and their values.
  std::vector<std::pair<std::string, std::string>> values = {};
  std::vector<std::string> users = {};   ///< that shall be there
  std::vector<std::string> absent = {};  ///< users that shall not be there
  bool onlyUsers = false;                ///< all other users go
  bool exclusive = false;   ///< what is not named goes to its default, and all other users go
  bool exactOrder = false;  ///< the users shall have the order that they are named in

  bool operator==(const Wanted&) const = default;
};

/// What is to be done. `now` is all that the store has. What is so already needs no step; one that
/// sets it in another spelling changes nothing.
std::vector<bridge::Change> stepsTo(const Wanted& wanted, const bridge::NamedValues& now);

/// What a change has done.
struct Done {
  std::vector<bridge::Change> steps = {};
  bridge::NamedValues values = {};  ///< as the store tells what was set
};

/// Has the store carry out steps that follow from what it holds, unless there are none. `stepsFrom`
/// gets all of that; `write` gets the steps, with the revisions of the groups that they change. If
/// others change these meanwhile, it all begins anew, three times.
Done change(
    Store& store,
    const std::function<std::vector<bridge::Change>(const bridge::NamedValues& now)>& stepsFrom,
    const std::function<bridge::NamedValues(const bridge::NamedChanges& changes)>& write);

/// The same with Store::set.
Done change(
    Store& store,
    const std::function<std::vector<bridge::Change>(const bridge::NamedValues& now)>& stepsFrom);

}  // namespace client
