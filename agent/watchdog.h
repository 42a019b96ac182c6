// Proof for the service manager that the agent does its work.
#pragma once

#include <asio/io_context.hpp>
#include <chrono>
#include <functional>
#include <thread>

namespace agent {

/// Looks once an interval whether what the agent serves can be used and the context's thread does
/// its work, and calls `alive` there: not while one of them is stuck.
class Watchdog {
 public:
  /// `look` runs on a thread of its own and does not return while something is stuck. REQUIRES: the
  /// context outlives the watchdog; neither function throws.
  Watchdog(asio::io_context& io, std::function<void()> look, std::chrono::microseconds interval,
           std::function<void()> alive);

  /// Does not wait for a look that goes on.
  void stop() { thread_.request_stop(); }

 private:
  std::jthread thread_;
};

}  // namespace agent
