// What the members of a group hold at one moment, to tell which of them a write has changed.
#pragma once

#include <string>
#include <vector>

#include "lparams/params/param_group.h"

namespace agent {

class GroupValues {
 public:
  /// REQUIRES: a group of the catalogue that nobody writes meanwhile.
  explicit GroupValues(LPARAMS::Server::ParamGroup& group);

  /// The names of the members that hold something else in `later`, with commas between them, and
  /// never a value. Entries of the user list are told apart by their names, wherever they stand:
  /// "[anna].PMP_TIMEOUT", "[bert] added", "[carl] removed", "order". Of many only the first are
  /// named, and how many more there are. "none" if there are none.
  std::string changesUntil(const GroupValues& later) const;

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
