// Values of the settings that no checked write may set, and that are there all the same.
#pragma once

#include <set>
#include <string>
#include <tuple>

#include "lparams/params/param_group.h"

namespace editing {

/// Whether a checked write may set the parameter's value. Takes the parameter's lock.
bool mayBeWritten(LPARAMS::Server::Param& param);

/// Those of one group. A settings file brings them, or a program that wrote without the check. They
/// may stay: else one of them would refuse every write of its group.
class StandingValues {
 public:
  /// Takes the group's lock. REQUIRES: a group of the catalogue.
  explicit StandingValues(LPARAMS::Server::ParamGroup& group);

  /// Whether the parameter has its value in the group too; `user` is the name of its entry in the
  /// user list, and empty elsewhere.
  bool hold(const std::string& user, LPARAMS::Server::Param& param) const;

 private:
  void add(const std::string& user, const LPARAMS::Server::ParamGroup& group);

  std::set<std::tuple<std::string, std::string, std::string>> values_;  // user, parameter, value
};

}  // namespace editing
