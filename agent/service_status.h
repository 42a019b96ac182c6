// What the service manager shows of the agent, in words.
#pragma once

#include <string>

#include "agent/state/settings_keeper.h"

namespace agent {

/// Where the agent listens, and what is wrong with its settings, if anything. One line.
std::string serviceStatus(const std::string& socket, const SettingsKeeper::State& state);

/// Tells the service manager a status when it is another one. Not thread-safe.
class ServiceStatus {
 public:
  void tell(std::string status);

 private:
  std::string told_;
};

}  // namespace agent
