// What a change has done, for people and for programs.
#pragma once

#include <string>
#include <vector>

#include "client/catalogue_view.h"
#include "client/steps.h"

namespace client {

/// Where the new values are by now.
enum class Kept {
  InMemory,  ///< and in the file as far as they are what it has
  Saved,
};

/// What the steps have changed, without those that have not.
struct ChangeReport {
  explicit ChangeReport(const Done& done);

  std::vector<std::string> added = {};             ///< users
  std::vector<std::string> removed = {};           ///< users
  std::vector<std::string> moved = {};             ///< users, to another place in the list
  std::vector<bridge::NamedValue> values = {};     ///< that are not what they were
  std::vector<bridge::NamedValue> unchanged = {};  ///< that were set to what they were

  bool empty() const { return added.empty() && removed.empty() && moved.empty() && values.empty(); }
};

/// One line for each change: "IKE.EXCHANGE_TIMEOUT: 90 -> 120   (not saved)", "USERS[eve]: added".
std::string linesOf(const ChangeReport& report, Kept kept);

/// {"changed": true, "changes": [{"name": ..., "before": ..., "after": ...}], "added": [...],
/// "removed": [...], "moved": [...]}; a secret's values are null.
CatalogueView::Json documentOf(const ChangeReport& report, const CatalogueView& catalogue);

}  // namespace client
