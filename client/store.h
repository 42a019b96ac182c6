// Where the settings are that a command reads and changes.
#pragma once

#include <string>

#include "bridge/named_values.h"

namespace client {

/// How settings are saved.
struct Saving {
  bool force = false;        ///< confirms what the agent would refuse otherwise
  std::string message = {};  ///< what the agent's history says of it
};

/// The settings of an agent, or those in a file. Each operation throws Failure with the reason if
/// it is refused. Settings go by their names: what the catalogue holds need not be known here.
class Store {
 public:
  virtual ~Store() = default;

  /// The values of these parameters, groups and users; all if nothing is named.
  virtual bridge::NamedValues get(const bridge::Names& names) = 0;

  /// Carries out all of the changes, or none. What is changed in an agent is so in its memory: its
  /// file follows with save().
  virtual bridge::NamedValues set(const bridge::NamedChanges& changes) = 0;

  /// What set() would answer. Nothing is changed.
  virtual bridge::NamedValues tryOut(const bridge::NamedChanges& changes) = 0;

  /// Makes changes last.
  virtual void save(const Saving& how) = 0;

  /// The catalogue, a JSON object.
  virtual std::string schema() = 0;
};

}  // namespace client
