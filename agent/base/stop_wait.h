// Waiting that ends early when a thread is asked to stop.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <stop_token>

namespace agent {

/// Returns whether a stop was asked for within the time.
inline bool waitForStop(const std::stop_token& stop, std::chrono::microseconds time) {
  std::mutex mutex;
  std::unique_lock lock(mutex);
  std::condition_variable_any never;
  (void)never.wait_for(lock, stop, time, [] { return false; });
  return stop.stop_requested();
}

}  // namespace agent
