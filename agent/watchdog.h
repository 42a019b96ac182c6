// Proof for the service manager that the agent does its work.
#pragma once

#include <asio/io_context.hpp>
#include <chrono>
#include <functional>
#include <thread>

#include "platform/lockable.h"

namespace agent {

/// Looks once an interval whether an object can be locked and the context's thread does its work,
/// and calls `alive` there: not while one of them is stuck.
class Watchdog {
 public:
  /// REQUIRES: the context and the object outlive the watchdog.
  Watchdog(asio::io_context& io, basekit::ObjectLevelLockable& object,
           std::chrono::microseconds interval, std::function<void()> alive);

  /// Does not wait for a look that goes on.
  void stop() { thread_.request_stop(); }

 private:
  std::jthread thread_;
};

}  // namespace agent
