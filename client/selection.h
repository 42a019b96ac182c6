// The part of the settings that a command line names.
#pragma once

#include <string>
#include <vector>

#include "bridge/named_values.h"
#include "client/store.h"

namespace client {

/// Parameters, groups and users by their names, or everything.
struct Selection {
  std::vector<std::string> names = {};
  bool all = false;

  /// Throws Failure unless the user has said what is meant.
  void require() const;

  /// Those of the values that are meant; of users who are saved but removed too. Throws Failure
  /// with all names that stand for nothing.
  std::vector<bridge::NamedValue> of(const bridge::NamedValues& values, Store& store) const;

  /// Whether the whole list is meant.
  bool hasAllUsers() const;

  /// Whether the user, who has that name, is meant as a whole.
  bool hasUser(const std::string& user) const;
};

}  // namespace client
