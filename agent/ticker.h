// What is done once an interval.
#pragma once

#include <asio/io_context.hpp>
#include <asio/steady_timer.hpp>
#include <chrono>
#include <functional>

#include "agent/base/handler_memory.h"

namespace agent {

/// Calls a function once an interval, on the context's thread, which alone uses it.
class Ticker {
 public:
  /// REQUIRES: the context outlives it; it is stopped before it is destroyed, or the context is run
  /// no more.
  Ticker(asio::io_context& io, std::chrono::milliseconds interval, std::function<void()> tick);

  Ticker(const Ticker&) = delete;
  Ticker& operator=(const Ticker&) = delete;

  /// No call begins any more, and the context has no work from it.
  void stop();

 private:
  void wait();

  const std::chrono::milliseconds interval_;
  const std::function<void()> tick_;
  asio::steady_timer timer_;
  HandlerMemory memory_;
  bool stopped_ = false;  // cancelling does not reach a handler that is due already
};

}  // namespace agent
