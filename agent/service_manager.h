// What the agent tells the service manager that has started it.
#pragma once

#include <chrono>
#include <optional>
#include <string_view>

namespace agent {

/// Sends a state such as "READY=1" to the socket that the manager has named in the environment;
/// does nothing if there is none. The protocol is that of sd_notify(3).
void notifyServiceManager(std::string_view state);

/// How often the manager wants to hear that the agent is alive: half of the time after which it
/// acts (sd_watchdog_enabled(3)). Nothing if it does not.
std::optional<std::chrono::microseconds> watchdogInterval();

}  // namespace agent
