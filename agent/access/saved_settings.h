// What was saved last, as settings.
#pragma once

#include <memory>
#include <string>

#include "agent/base/mutex.h"
#include "agent/state/settings_keeper.h"
#include "lparams/catalogue/catalogue.h"

namespace agent {

/// Keeps the settings that the saved text stands for, until another text is saved. Thread-safe.
class SavedSettings {
 public:
  /// REQUIRES: the keeper outlives it.
  explicit SavedSettings(const SettingsKeeper& keeper) : keeper_(keeper) {}

  /// What a load of the saved text gives; null if nothing has been saved. Never changed any more.
  std::shared_ptr<LPARAMS::Server::Catalogue> current();

 private:
  const SettingsKeeper& keeper_;
  Mutex mutex_;
  std::shared_ptr<const std::string> text_ GUARDED_BY(mutex_);
  std::shared_ptr<LPARAMS::Server::Catalogue> settings_ GUARDED_BY(mutex_);  // of that text
};

}  // namespace agent
