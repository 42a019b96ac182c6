// What the members of a group hold at one moment, to tell what a write has changed.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "bridge/notice.h"
#include "lparams/params/param_group.h"

namespace agent {

/// A part of what a write has changed. Refers to what it comes from and copies nothing.
struct GroupChange {
  bridge::NoticedChange::Kind kind = bridge::NoticedChange::Value;
  const LPARAMS::Server::ParamGroup& group;
  const std::string* user = nullptr;  ///< the user's name; null if it is about none
  size_t index = 0;                   ///< in the list, before the write if the user is removed
  bool onlyOfName = true;             ///< no other user in that list has the name
  const LPARAMS::Server::Param* member = nullptr;  ///< of a value
  const std::string* before = nullptr;             ///< a value, but of a user who was added
  const std::string* after = nullptr;              ///< a value
};

class GroupValues {
 public:
  /// REQUIRES: a group of the catalogue that nobody writes meanwhile.
  explicit GroupValues(LPARAMS::Server::ParamGroup& group);

  /// Visits what `later` has otherwise. Users are told apart by their names, wherever they stand;
  /// those who were added are followed by what they do not have at its default.
  void visitChangesUntil(const GroupValues& later,
                         const std::function<void(const GroupChange&)>& visit) const;

 private:
  struct Entry {
    std::string name;  ///< empty for a group that is no list
    std::vector<std::string> values;

    bool operator==(const Entry&) const = default;
  };

  LPARAMS::Server::ParamGroup& group_;
  std::vector<Entry> entries_;
};

}  // namespace agent
