// The hashes of the running and of the saved settings.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "agent/access/saved_settings.h"
#include "agent/base/mutex.h"
#include "agent/bridge/change_tracker.h"
#include "lparams/catalogue/catalogue.h"
#include "schema/settings_hash.h"

namespace agent {

/// Computes each only once until somebody writes or saves: with many users that takes a while.
/// Thread-safe; does not wait for a save.
class SettingsHashes {
 public:
  /// REQUIRES: all of them outlive it.
  SettingsHashes(const LPARAMS::Server::Catalogue& settings, const ChangeTracker& changes,
                 SavedSettings& saved)
      : settings_(settings), changes_(changes), saved_(saved) {}

  /// May be of a moment between the writes of one command.
  schema::SettingsHash running();

  /// Of what the next start would load; nothing if nothing is saved.
  std::optional<schema::SettingsHash> saved();

 private:
  const LPARAMS::Server::Catalogue& settings_;
  const ChangeTracker& changes_;
  SavedSettings& saved_;

  Mutex mutex_;
  std::vector<uint64_t> revisions_ GUARDED_BY(mutex_);  // of the groups, before the hash was made
  schema::SettingsHash running_ GUARDED_BY(mutex_);
  std::shared_ptr<LPARAMS::Server::Catalogue> savedSettings_ GUARDED_BY(mutex_);
  schema::SettingsHash savedHash_ GUARDED_BY(mutex_);  // of those
};

}  // namespace agent
