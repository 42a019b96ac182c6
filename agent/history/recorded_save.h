// Saves that the history tells of.
#pragma once

#include <cstdint>
#include <string>

#include "agent/history/history.h"
#include "agent/state/settings_keeper.h"

namespace agent {

struct RecordedSave {
  std::string failure;    ///< why it was refused or failed, in words; empty after a success
  uint64_t revision = 0;  ///< that it has made; 0 if none
};

/// Saves the settings, as SettingsKeeper::save does, and keeps what that has changed as a revision.
/// Thread-safe.
inline RecordedSave saveRecorded(SettingsKeeper& keeper, History& history, bool force,
                                 const Author& author, const std::string& message) {
  RecordedSave save;
  save.failure = keeper.save(
      force, [&](const auto& text) { save.revision = history.saved(author, message, text); });
  return save;
}

}  // namespace agent
