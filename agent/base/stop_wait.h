// Waiting that ends early when a thread is asked to stop.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <stop_token>

namespace agent {

/// Returns whether a stop was asked for within the time. Allocates nothing.
inline bool waitForStop(const std::stop_token& stop, std::chrono::microseconds time) {
  std::mutex mutex;
  std::condition_variable asked;
  const std::stop_callback wake(stop, [&] {
    const std::lock_guard lock(mutex);
    asked.notify_all();
  });
  std::unique_lock lock(mutex);
  (void)asked.wait_for(lock, time, [&] { return stop.stop_requested(); });
  return stop.stop_requested();
}

}  // namespace agent
