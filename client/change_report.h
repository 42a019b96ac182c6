// What a change has done, for people and for programs.
#pragma once

#include <iosfwd>
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

/// What is not what it was.
struct ChangeReport {
  ChangeReport() = default;
  enum Unchanged { LeftOut, Told };
  explicit ChangeReport(const Done& done, Unchanged unchanged = LeftOut);

  /// Whether everything is what it was.
  bool empty() const;

  std::vector<std::string> added = {};    ///< users
  std::vector<std::string> removed = {};  ///< users
  std::vector<std::string> moved = {};    ///< users, to another place in the list
  std::vector<bridge::NamedValue> values = {};
};

/// One line for each change: "IKE.EXCHANGE_TIMEOUT: 90 -> 120   (not saved)", "USERS[eve]: added".
std::string linesOf(const ChangeReport& report, Kept kept);

/// {"changed": true, "changes": [{"name": ..., "before": ..., "after": ...}], "added": [...],
/// "removed": [...], "moved": [...]}; a secret's values are null.
CatalogueView::Json documentOf(const ChangeReport& report, const CatalogueView& catalogue);

/// Prints what a change has done, as lines or as that document; "nothing to change" if
/// there is no line.
void print(std::ostream& out, const ChangeReport& report, Kept kept, bool json, Store& store);

/// The same when the store has saved it. What has been done is printed too if that fails.
void saveAndPrint(std::ostream& out, const ChangeReport& report, const Saving& how, bool json,
                  Store& store);

}  // namespace client
