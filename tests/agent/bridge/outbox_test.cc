#include "agent/bridge/outbox.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <future>
#include <string>

namespace agent {
namespace {

using Outcome = Outbox::Outcome;

class OutboxTest : public testing::Test {
 protected:
  ~OutboxTest() override {
    (void)::close(sockets_[0]);
    closeClient();
  }

  void closeClient() {
    if (sockets_[1] >= 0) (void)::close(sockets_[1]);
    sockets_[1] = -1;
  }

  /// What the client finds in the socket.
  std::string taken() const {
    std::string bytes;
    std::array<char, 65536> chunk;
    for (ssize_t size;
         (size = ::recv(sockets_[1], chunk.data(), chunk.size(), MSG_DONTWAIT)) > 0;) {
      bytes.append(chunk.data(), static_cast<size_t>(size));
    }
    return bytes;
  }

  /// Sends frames until the socket is full, and returns them.
  std::string fill() {
    for (std::string sent;;) {
      const std::string frame(10000, static_cast<char>('a' + sent.size() / 10000 % 26));
      const Outcome outcome = outbox_.send(frame);
      sent += frame;
      if (outcome != Outcome::Written) {
        EXPECT_EQ(outcome, Outcome::Pending);
        return sent;
      }
    }
  }

  static std::array<int, 2> socketPair() {
    std::array<int, 2> sockets{};
    EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, sockets.data()), 0);
    return sockets;
  }

  std::array<int, 2> sockets_ = socketPair();
  int backlogs_ = 0;
  Outbox outbox_{sockets_[0], [this] { ++backlogs_; }};
};

TEST_F(OutboxTest, WritesAtOnceWhatTheSocketTakes) {
  EXPECT_EQ(outbox_.send("one "), Outcome::Written);
  EXPECT_EQ(outbox_.send("two"), Outcome::Written);
  EXPECT_EQ(taken(), "one two");
  EXPECT_EQ(backlogs_, 0);
  EXPECT_FALSE(outbox_.untakenSince());
  EXPECT_TRUE(outbox_.waitUntilWritten());
}

TEST_F(OutboxTest, KeepsTheRestInItsOrder) {
  const auto before = Outbox::Clock::now();
  std::string sent = fill();
  EXPECT_EQ(backlogs_, 1);
  for (int i = 0; i < 200; ++i) {
    const std::string frame = std::to_string(i) + std::string(10000, '-');
    EXPECT_EQ(outbox_.send(frame), Outcome::Pending);
    sent += frame;
  }
  EXPECT_EQ(backlogs_, 1) << "one is under way";
  ASSERT_TRUE(outbox_.untakenSince());
  EXPECT_GE(*outbox_.untakenSince(), before);

  std::string received = taken();
  while (outbox_.untakenSince()) {
    const int known = backlogs_;
    outbox_.writeMore();
    EXPECT_EQ(backlogs_, known + (outbox_.untakenSince() ? 1 : 0));
    received += taken();
  }
  EXPECT_EQ(received, sent);
  EXPECT_EQ(outbox_.send("again"), Outcome::Written);
}

TEST_F(OutboxTest, WaitsUntilAllIsWritten) {
  const std::string sent = fill();
  auto done = std::async(std::launch::async, [this] { return outbox_.waitUntilWritten(); });
  EXPECT_EQ(done.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
  std::string received = taken();
  outbox_.writeMore();
  EXPECT_TRUE(done.get());
  EXPECT_EQ(received += taken(), sent);
}

TEST_F(OutboxTest, AThousandFramesAreTheMost) {
  (void)fill();
  for (int i = 1; i < 1000; ++i) ASSERT_EQ(outbox_.send("x"), Outcome::Pending);
  EXPECT_EQ(outbox_.send("x"), Outcome::Overflow);
  EXPECT_EQ(outbox_.send("x"), Outcome::Closed);
  EXPECT_FALSE(outbox_.untakenSince());
}

TEST_F(OutboxTest, TakesNothingOnceItIsClosed) {
  (void)fill();
  auto done = std::async(std::launch::async, [this] { return outbox_.waitUntilWritten(); });
  outbox_.close();
  EXPECT_FALSE(done.get());
  (void)taken();
  EXPECT_EQ(outbox_.send("more"), Outcome::Closed);
  outbox_.writeMore();
  EXPECT_EQ(taken(), "");
}

TEST_F(OutboxTest, IsClosedWhenTheClientIsGone) {
  closeClient();
  EXPECT_EQ(outbox_.send("one"), Outcome::Closed);
  EXPECT_FALSE(outbox_.waitUntilWritten());
}

TEST_F(OutboxTest, IsClosedWhenTheClientGoesBeforeItHasTakenAll) {
  (void)fill();
  closeClient();
  outbox_.writeMore();
  EXPECT_FALSE(outbox_.waitUntilWritten());
  EXPECT_EQ(outbox_.send("one"), Outcome::Closed);
}

}  // namespace
}  // namespace agent
