// Changes of single parameters, tried out before the module sees them.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "bridge/named_values.h"
#include "editing/mistakes.h"
#include "editing/parameters.h"
#include "editing/record_check.h"
#include "editing/value_reader.h"
#include "lparams/catalogue/catalogue.h"

namespace editing {

/// A copy of the settings that takes the steps of a change, one after the other, and finds what is
/// wrong with them. Names are those from before the change; a user that is added has its name at
/// once. Used by one thread, while nobody else writes settings.
class Draft {
 public:
  /// Whether the steps name users. If not, the list, which may be long, is not copied.
  enum Users { WithUsers, WithoutUsers };

  /// REQUIRES: the check outlives the draft.
  Draft(LPARAMS::Server::Catalogue& settings, const RecordCheck& check, Users users);

  Draft(const Draft&) = delete;
  Draft& operator=(const Draft&) = delete;

  void apply(const bridge::Change& change);

  /// To be called once, behind the last step.
  void finish();

  /// Empty unless something must not be written.
  const Mistakes& mistakes() const { return mistakes_; }

  /// The draft's groups whose values are not those of the settings.
  std::vector<LPARAMS::Server::ParamGroup*> changedGroups();

  /// The settings with the steps.
  LPARAMS::Server::Catalogue& settings() { return draft_; }

  /// What was set, each once, in the order of the steps.
  std::vector<bridge::NamedValue> changedValues(std::shared_ptr<LPARAMS::Server::Catalogue> saved);

 private:
  struct Touched {
    Parameters::Found found;            // its parameter is null if its user is removed
    std::optional<std::string> before;  // missing if the user is new
  };

  void set(const bridge::Change& change);
  void addUser(const std::string& name);
  void removeUser(const std::string& key);
  void checkUsers();
  void checkSize();
  bool isNew(const LPARAMS::Server::USER_t* user) const;

  const RecordCheck& check_;
  LPARAMS::Server::Catalogue draft_;
  Parameters parameters_;
  Mistakes mistakes_;
  std::vector<Touched> touched_;
  std::map<const LPARAMS::Server::Param*, size_t> places_;  // in `touched_`
  std::vector<LPARAMS::Server::USER_t*> added_;
  std::vector<LPARAMS::Server::USER_t*> removed_;  // in the list until finish()
};

}  // namespace editing
