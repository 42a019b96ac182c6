// What the module asked of the process that loaded it, in order.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace host {

/// Writes a call down. Thread-safe.
void record(const std::string& call);

/// The calls that were made while `action` ran. File calls count if they name a file in the private
/// directory of the test or in the system's own settings directory.
std::vector<std::string> callsDuring(const std::function<void()>& action);

}  // namespace host
