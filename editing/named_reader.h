// What names stand for, read.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "bridge/named_values.h"
#include "bridge/protocol.h"
#include "editing/mistakes.h"
#include "editing/parameters.h"
#include "editing/value_reader.h"
#include "lparams/catalogue/catalogue.h"

namespace editing {

/// Reads the values of parameters, whole groups and users. Used by one thread, while nobody else
/// writes the settings.
class NamedReader {
 public:
  /// `saved` may be null: then there are no saved values. Without `seesSecrets` secrets have none.
  /// REQUIRES: the settings outlive the reader.
  NamedReader(LPARAMS::Server::Catalogue& settings,
              std::shared_ptr<LPARAMS::Server::Catalogue> saved, bool seesSecrets)
      : settings_(settings),
        parameters_(settings),
        reader_(parameters_, std::move(saved), seesSecrets) {}

  /// The values of what is named, in that order; all if nothing is. Those of users who are saved
  /// but removed stand behind the others of the list. Gives up in the midst when they do not fit a
  /// reply of the bridge: a group may be named a million times.
  std::vector<bridge::NamedValue> read(const bridge::Names& names);

  /// Which names stand for nothing.
  const Mistakes& mistakes() const { return mistakes_; }

  /// Whether the values have not all been read.
  bool isTooLarge() const { return size_ > bridge::MAX_REPLY_OUTPUT; }

 private:
  void add(const Parameters::Found& found);
  void add(bridge::NamedValue value);
  void addMembers(const LPARAMS::Server::ParamGroup& owner, Parameters::Found found);

  LPARAMS::Server::Catalogue& settings_;
  Parameters parameters_;
  ValueReader reader_;
  Mistakes mistakes_;
  std::vector<bridge::NamedValue> values_;
  size_t size_ = 0;  // of the values as a reply has them, in bytes
};

}  // namespace editing
