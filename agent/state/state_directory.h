// The directory that holds the settings, and the names of what may lie in it.
#pragma once

#include <string>

#include "lparams/interface/file_names.h"

namespace agent {

/// Holds the directory for one agent, as long as it lives. The lock is on the directory itself: it
/// needs no file, and works on a full disk and on one that cannot be written to.
class StateDirectory {
 public:
  /// Throws StartFailure unless the path is a directory that belongs to the agent's user, that
  /// nobody else can write to and that no other agent holds.
  explicit StateDirectory(const std::string& path);
  ~StateDirectory();

  StateDirectory(const StateDirectory&) = delete;
  StateDirectory& operator=(const StateDirectory&) = delete;

  /// Absolute, and without links.
  const std::string& path() const { return path_; }

  std::string settings() const { return at(LPARAMS::Server::SETTINGS_FILE_NAME); }
  /// What the module writes before it renames it over the settings.
  std::string backup() const { return settings() + LPARAMS::Server::TEMPORARY_SUFFIX; }
  /// The agent's own durable copy of the settings.
  std::string shadowCopy() const { return settings() + ".good"; }
  /// The settings of earlier versions, which the module imports and deletes.
  std::string legacy() const { return at(LPARAMS::Server::LEGACY_FILE_NAME); }
  /// Those settings, kept from before an import until its values are durable.
  std::string importing() const { return legacy() + ".importing"; }
  /// Changes that wait for confirmation.
  std::string unconfirmed() const { return at("unconfirmed"); }
  /// The revisions of the history are called that, and their numbers behind it.
  std::string history() const { return at("history."); }

 private:
  std::string at(const char* name) const { return path_ + "/" + name; }

  const std::string path_;
  const int descriptor_;
};

}  // namespace agent
