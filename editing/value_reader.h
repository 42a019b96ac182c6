// A parameter's values beside each other.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "bridge/named_values.h"
#include "editing/parameters.h"
#include "lparams/catalogue/catalogue.h"

namespace editing {

/// Gives the running, the saved and the default value of parameters. Used by one thread.
class ValueReader {
 public:
  /// `saved` may be null: then there are no saved values. Without `seesSecrets` a secret has no
  /// values. REQUIRES: the running parameters outlive the reader.
  ValueReader(Parameters& running, std::shared_ptr<LPARAMS::Server::Catalogue> saved,
              bool seesSecrets);

  /// REQUIRES: the parameter, not a whole group or user.
  bridge::NamedValue read(const Parameters::Found& found);

  /// What was saved of users who are not there any more.
  std::vector<bridge::NamedValue> readRemovedUsers();

 private:
  bridge::NamedValue valuesOf(std::string owner, LPARAMS::Server::Param* running,
                              LPARAMS::Server::ParamGroup* saved,
                              LPARAMS::Server::ParamGroup& byDefault, const char* name) const;

  Parameters& running_;
  const std::shared_ptr<LPARAMS::Server::Catalogue> saved_;
  std::optional<Parameters> savedParameters_;
  const bool seesSecrets_;
  LPARAMS::Server::Catalogue defaults_;
  LPARAMS::Server::USER_t defaultUser_;
};

}  // namespace editing
