#include "agent/watchdog.h"

#include <asio/post.hpp>
#include <utility>

#include "agent/base/stop_wait.h"

namespace agent {

Watchdog::Watchdog(asio::io_context& io, basekit::ObjectLevelLockable& object,
                   std::chrono::microseconds interval, std::function<void()> alive)
    : thread_([&io, &object, interval, alive = std::move(alive)](const std::stop_token& stop) {
        do {
          { const basekit::ObjectLevelLockable::Lock lock(object); }
          asio::post(io, alive);
        } while (!waitForStop(stop, interval));
      }) {}

}  // namespace agent
