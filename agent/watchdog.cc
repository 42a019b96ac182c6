#include "agent/watchdog.h"

#include <asio/post.hpp>
#include <atomic>
#include <memory>
#include <utility>

#include "agent/base/handler_memory.h"
#include "agent/base/stop_wait.h"

namespace agent {
namespace {

/// What the context's thread calls. It may do so, or drop the call, when the watchdog is gone.
struct Report {
  explicit Report(std::function<void()> alive) : alive(std::move(alive)) {}

  const std::function<void()> alive;
  HandlerMemory memory;
  std::atomic<bool> underWay = false;  // one at a time
};

void post(asio::io_context& io, const std::shared_ptr<Report>& report) {
  if (report->underWay.exchange(true)) return;
  asio::post(io, inMemory(report->memory, [report] {
               report->underWay = false;
               report->alive();
             }));
}

}  // namespace

Watchdog::Watchdog(asio::io_context& io, std::function<void()> look,
                   std::chrono::microseconds interval, std::function<void()> alive)
    : thread_([&io, look = std::move(look), interval,
               report = std::make_shared<Report>(std::move(alive))](const std::stop_token& stop) {
        do {
          look();
          post(io, report);
        } while (!waitForStop(stop, interval));
      }) {}

}  // namespace agent
