#include "agent/ticker.h"

#include <utility>

namespace agent {

Ticker::Ticker(asio::io_context& io, std::chrono::milliseconds interval, std::function<void()> tick)
    : interval_(interval), tick_(std::move(tick)), timer_(io) {
  wait();
}

void Ticker::stop() {
  stopped_ = true;
  timer_.cancel();
}

void Ticker::wait() {
  timer_.expires_after(interval_);
  timer_.async_wait(inMemory(memory_, [this](const asio::error_code& /*cancelled*/) {
    if (stopped_) return;
    wait();
    tick_();  // last: it may find no memory
  }));
}

}  // namespace agent
