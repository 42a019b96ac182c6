#include "agent/watchdog.h"

#include <gtest/gtest.h>

#include <asio/executor_work_guard.hpp>
#include <asio/post.hpp>
#include <atomic>
#include <future>
#include <optional>
#include <thread>
#include <utility>

#include "agent/base/mutex.h"

namespace agent {
namespace {

using namespace std::chrono_literals;

class WatchdogTest : public testing::Test {
 protected:
  ~WatchdogTest() override {
    work_.reset();
    loop_.join();
  }

  void waitForMoreThan(int count) {
    for (int now = alive_; now <= count; now = alive_) alive_.wait(now);
  }

  /// What has been seen to be alive up to now is counted.
  int count() {
    std::promise<int> count;
    asio::post(io_, [&] { count.set_value(alive_); });
    return count.get_future().get();
  }

  asio::io_context io_;
  asio::executor_work_guard<asio::io_context::executor_type> work_ = asio::make_work_guard(io_);
  std::atomic<int> alive_ = 0;
  Mutex object_;
  std::jthread loop_{[this] { io_.run(); }};
  std::optional<Watchdog> watchdog_{std::in_place, io_, [this] { const MutexLock lock(object_); },
                                    1ms,
                                    [this] {
                                      ++alive_;
                                      alive_.notify_all();
                                    }};
};

TEST_F(WatchdogTest, TellsAgainAndAgain) { waitForMoreThan(5); }

TEST_F(WatchdogTest, IsSilentWhileALookDoesNotReturn) {
  waitForMoreThan(0);
  int before = 0;
  {
    const MutexLock lock(object_);
    before = count();
    std::this_thread::sleep_for(50ms);
    EXPECT_LE(count(), before + 1) << "one look may have been over already";
  }
  waitForMoreThan(before + 1);
}

TEST_F(WatchdogTest, IsSilentOnceItIsStopped) {
  waitForMoreThan(0);
  watchdog_->stop();
  watchdog_.reset();
  const int before = count();
  std::this_thread::sleep_for(20ms);
  EXPECT_EQ(count(), before);
}

}  // namespace
}  // namespace agent
