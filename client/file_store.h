// The settings in a file, without an agent.
#pragma once

#include <memory>
#include <string>

#include "client/store.h"
#include "inspection/finding.h"
#include "lparams/catalogue/catalogue.h"

namespace client {

/// Loads the file as the module would, with this program's catalogue. What is changed is written at
/// once, as a save of the agent would write it; nothing is written that would drop something of the
/// file as it is. A file in a directory that an agent uses is refused.
class FileStore final : public Store {
 public:
  enum Use {
    InPlaceOfAgent,
    ToCompare,  ///< the file may be one that an agent uses
  };

  /// Throws Failure unless a start would take the file for a whole settings file.
  explicit FileStore(std::string path, Use use = InPlaceOfAgent);

  bridge::NamedValues get(const bridge::Names& names) override;
  bridge::NamedValues set(const bridge::NamedChanges& changes) override;
  bridge::NamedValues tryOut(const bridge::NamedChanges& changes) override;
  void save(const Saving& how) override;
  std::string schema() override;

 private:
  const std::string path_;
  std::string text_;
  inspection::Findings findings_;
  std::shared_ptr<LPARAMS::Server::Catalogue> settings_;
};

}  // namespace client
