#include "agent/bridge/send_queue.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <future>
#include <string>

#include "agent/bridge/limits.h"
#include "tests/agent/bridge/send_calls.h"

namespace agent {
namespace {

using Outcome = SendQueue::Outcome;

class SendQueueTest : public testing::Test {
 protected:
  ~SendQueueTest() override {
    agent_testing::disturbSends(false);
    (void)::close(sockets_[0]);
    closeClient();
  }

  void closeClient() {
    if (sockets_[1] >= 0) (void)::close(sockets_[1]);
    sockets_[1] = -1;
  }

  /// Whether both ends of the connection know that it has ended. Does not wait.
  bool hasEnded() const {
    char byte = 0;
    return ::recv(sockets_[0], &byte, 1, MSG_DONTWAIT) == 0 &&
           ::recv(sockets_[1], &byte, 1, MSG_DONTWAIT) == 0;
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
      const Outcome outcome = sendQueue_.send(frame);
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
  SendQueue sendQueue_{sockets_[0], [this] { ++backlogs_; }};
};

TEST_F(SendQueueTest, WritesAtOnceWhatTheSocketTakes) {
  EXPECT_EQ(sendQueue_.send("one "), Outcome::Written);
  EXPECT_EQ(sendQueue_.send("two"), Outcome::Written);
  EXPECT_EQ(taken(), "one two");
  EXPECT_EQ(backlogs_, 0);
  EXPECT_FALSE(sendQueue_.untakenSince());
  EXPECT_TRUE(sendQueue_.waitUntilWritten());
}

TEST_F(SendQueueTest, KeepsTheRestInItsOrder) {
  const auto before = SendQueue::Clock::now();
  std::string sent = fill();
  EXPECT_EQ(backlogs_, 1);
  for (int i = 0; i < 200; ++i) {
    const std::string frame = std::to_string(i) + std::string(10000, '-');
    EXPECT_EQ(sendQueue_.send(frame), Outcome::Pending);
    sent += frame;
  }
  EXPECT_EQ(backlogs_, 1) << "one is under way";
  ASSERT_TRUE(sendQueue_.untakenSince());
  EXPECT_GE(*sendQueue_.untakenSince(), before);

  std::string received = taken();
  while (sendQueue_.untakenSince()) {
    const int known = backlogs_;
    sendQueue_.writeMore();
    EXPECT_EQ(backlogs_, known + (sendQueue_.untakenSince() ? 1 : 0));
    received += taken();
  }
  EXPECT_EQ(received, sent);
  EXPECT_EQ(sendQueue_.send("again"), Outcome::Written);
}

TEST_F(SendQueueTest, KeepsOnlySoManyBytesOfEvents) {
  (void)fill();
  EXPECT_EQ(sendQueue_.send(std::string(2 * MAX_PENDING_EVENTS, 'r')), Outcome::Pending)
      << "a reply";
  const std::string half(MAX_PENDING_EVENTS / 2, 'e');
  EXPECT_EQ(sendQueue_.send(half, SendQueue::Kind::Event), Outcome::Pending);
  EXPECT_EQ(sendQueue_.send(half, SendQueue::Kind::Event), Outcome::Pending);
  while (sendQueue_.untakenSince()) {
    (void)taken();
    sendQueue_.writeMore();
  }
  (void)fill();
  EXPECT_EQ(sendQueue_.send(half, SendQueue::Kind::Event), Outcome::Pending) << "those are taken";
  EXPECT_EQ(sendQueue_.send(half, SendQueue::Kind::Event), Outcome::Pending);
  EXPECT_EQ(sendQueue_.send("e", SendQueue::Kind::Event), Outcome::Overflow);
  EXPECT_EQ(sendQueue_.send("r"), Outcome::Closed);
}

TEST_F(SendQueueTest, LosesNothingToInterruptedAndShortWrites) {
  agent_testing::disturbSends(true);
  std::string sent = fill();
  for (int i = 0; i < 20; ++i) {
    const std::string frame(5000, static_cast<char>('A' + i));
    EXPECT_EQ(sendQueue_.send(frame), Outcome::Pending);
    sent += frame;
  }
  std::string received = taken();
  while (sendQueue_.untakenSince()) {
    sendQueue_.writeMore();
    received += taken();
  }
  EXPECT_TRUE(received == sent);
}

TEST_F(SendQueueTest, AClientThatTakesALittleIsNotIdle) {
  (void)fill();
  for (int i = 0; i < 200; ++i)
    ASSERT_EQ(sendQueue_.send(std::string(10000, '-')), Outcome::Pending);
  for (int i = 0; i < 3; ++i) {
    const auto before = sendQueue_.untakenSince();
    ASSERT_TRUE(before);
    sendQueue_.writeMore();
    EXPECT_EQ(sendQueue_.untakenSince(), before) << "the client has taken nothing";
    std::array<char, 10000> some;
    while (::recv(sockets_[1], some.data(), some.size(), MSG_DONTWAIT) > 0) continue;
    sendQueue_.writeMore();
    EXPECT_GT(sendQueue_.untakenSince(), before);
  }
}

TEST_F(SendQueueTest, WaitsUntilAllIsWritten) {
  const std::string sent = fill();
  auto done = std::async(std::launch::async, [this] { return sendQueue_.waitUntilWritten(); });
  EXPECT_EQ(done.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
  std::string received = taken();
  sendQueue_.writeMore();
  EXPECT_TRUE(done.get());
  EXPECT_EQ(received += taken(), sent);
}

TEST_F(SendQueueTest, AThousandFramesAreTheMost) {
  (void)fill();
  for (int i = 1; i < 1000; ++i) ASSERT_EQ(sendQueue_.send("x"), Outcome::Pending);
  EXPECT_EQ(sendQueue_.send("x"), Outcome::Overflow);
  EXPECT_EQ(sendQueue_.send("x"), Outcome::Closed);
  EXPECT_FALSE(sendQueue_.untakenSince());
}

TEST_F(SendQueueTest, TakesNothingOnceItIsClosed) {
  (void)fill();
  auto done = std::async(std::launch::async, [this] { return sendQueue_.waitUntilWritten(); });
  sendQueue_.close();
  EXPECT_FALSE(done.get());
  (void)taken();
  EXPECT_EQ(sendQueue_.send("more"), Outcome::Closed);
  sendQueue_.writeMore();
  EXPECT_EQ(taken(), "");
}

TEST_F(SendQueueTest, WhatTheSystemDoesNotSendEndsTheConnection) {
  agent_testing::failNextSend(ENOBUFS);
  EXPECT_EQ(sendQueue_.send("one"), Outcome::Closed);
  EXPECT_TRUE(hasEnded());
}

TEST_F(SendQueueTest, ARestThatTheSystemDoesNotSendEndsTheConnection) {
  (void)fill();
  (void)taken();
  EXPECT_FALSE(hasEnded());
  agent_testing::failNextSend(ENOMEM);
  sendQueue_.writeMore();
  EXPECT_TRUE(hasEnded());
}

TEST_F(SendQueueTest, TooMuchThatIsUntakenEndsTheConnection) {
  (void)fill();
  while (sendQueue_.send("x") == Outcome::Pending) continue;
  (void)taken();
  EXPECT_TRUE(hasEnded());
}

TEST_F(SendQueueTest, IsClosedWhenTheClientIsGone) {
  closeClient();
  EXPECT_EQ(sendQueue_.send("one"), Outcome::Closed);
  EXPECT_FALSE(sendQueue_.waitUntilWritten());
}

TEST_F(SendQueueTest, IsClosedWhenTheClientGoesBeforeItHasTakenAll) {
  (void)fill();
  closeClient();
  sendQueue_.writeMore();
  EXPECT_FALSE(sendQueue_.waitUntilWritten());
  EXPECT_EQ(sendQueue_.send("one"), Outcome::Closed);
}

}  // namespace
}  // namespace agent
