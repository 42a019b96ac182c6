#include "agent/watchdog.h"

#include <gtest/gtest.h>

#include <asio/executor_work_guard.hpp>
#include <asio/post.hpp>
#include <atomic>
#include <future>
#include <memory>
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

TEST_F(WatchdogTest, StopsWithoutBeingWaitedFor) {
  // A look lives as long as the thread that looks.
  auto look = std::make_shared<std::promise<void>>();
  std::future<void> thread = look->get_future();
  watchdog_.emplace(
      io_, [look] {}, 1h, [] {});
  look.reset();
  watchdog_->stop();
  EXPECT_EQ(thread.wait_for(30s), std::future_status::ready);
}

TEST_F(WatchdogTest, TellsOnceOfManyLooksThatTheContextSleptThrough) {
  std::promise<void> wakeUp;
  asio::post(io_, [&] { wakeUp.get_future().wait(); });
  std::atomic<int> looks = 0;
  std::atomic<int> told = 0;
  watchdog_.emplace(
      io_,
      [&] {
        ++looks;
        looks.notify_all();
      },
      1ms, [&] { ++told; });
  for (int now = looks; now < 5; now = looks) looks.wait(now);
  watchdog_.reset();
  wakeUp.set_value();
  (void)count();
  EXPECT_EQ(told, 1);
}

}  // namespace
}  // namespace agent
