// Saves and the end of a degradation, as events.
#pragma once

#include "agent/events/events.h"
#include "agent/state/settings_keeper.h"

namespace agent {

/// Publishes each save of the keeper, by whomever, and that the agent is degraded, if it is.
/// REQUIRES: one exists at a time, and nobody saves while it is built or destroyed.
class SaveEvents {
 public:
  SaveEvents(SettingsKeeper& keeper, Events& events);
  ~SaveEvents();

  SaveEvents(const SaveEvents&) = delete;
  SaveEvents& operator=(const SaveEvents&) = delete;

 private:
  SettingsKeeper& keeper_;
};

}  // namespace agent
