#include "agent/ticker.h"

#include <gtest/gtest.h>

#include <asio/post.hpp>
#include <thread>

namespace agent {
namespace {

using std::chrono::milliseconds;

TEST(Ticker, CallsUntilItIsStopped) {
  asio::io_context io;
  int calls = 0;
  Ticker ticker(io, milliseconds(1), [&] {
    if (++calls == 3) ticker.stop();
  });
  io.run();
  EXPECT_EQ(calls, 3);
}

TEST(Ticker, IsStoppedAlsoWhenACallIsDue) {
  asio::io_context io;
  int calls = 0;
  Ticker ticker(io, milliseconds(20), [&] { ++calls; });
  asio::post(io, [&] {
    std::this_thread::sleep_for(milliseconds(40));
    // The context looks at its timers before it comes to this: the call stands behind it then.
    asio::post(io, [&] { ticker.stop(); });
  });
  (void)io.run_for(std::chrono::seconds(5));
  EXPECT_TRUE(io.stopped()) << "there is work for ever";
  EXPECT_EQ(calls, 0);
}

}  // namespace
}  // namespace agent
