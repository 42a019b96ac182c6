#include "agent/service_status.h"

#include <utility>

#include "agent/service_manager.h"
#include "text/escape.h"

namespace agent {

std::string serviceStatus(const std::string& socket, const SettingsKeeper::State& state) {
  std::string status = "listening on " + socket;
  if (!state.degradedReason.empty()) {
    status += "; degraded, saves are refused until one is forced: " + state.degradedReason;
  } else if (!state.disk.empty()) {
    status += "; the settings are not durable until they are saved: " + state.disk;
  } else if (!state.lastFailure.empty()) {
    status += "; the last save failed: " + state.lastFailure;
  }
  // A line end would begin another message to the manager.
  return text::escaped(status);
}

void ServiceStatus::tell(std::string status) {
  if (status == told_) return;
  notifyServiceManager("STATUS=" + status);
  told_ = std::move(status);
}

}  // namespace agent
