// What a session allows its client, over a real socket.
#include <gmock/gmock.h>

#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <atomic>
#include <chrono>
#include <future>
#include <list>
#include <thread>
#include <variant>

#include "agent/bridge/bridge_server.h"
#include "agent/bridge/limits.h"
#include "tests/agent/bridge/raw_client.h"
#include "tests/agent/bridge/send_calls.h"
#include "tests/agent/bridge/served_module.h"
#include "tests/agent/state/scratch_directory.h"

namespace agent {
namespace {

using agent_testing::adminRecord;
using agent_testing::RawClient;
using bridge::Reason;
using bridge::Reply;

constexpr size_t MAX_SESSIONS = SESSION_LIMITS.all;

/// A frame of any bytes, short enough for one byte of its size to count.
std::string frameOf(const std::string& body) {
  return std::string(1, static_cast<char>(body.size())) + std::string(3, '\0') + body;
}

class ClientConnection : public testing::Test {
 protected:
  ~ClientConnection() override {
    asio::post(io_, [this] { server_.stop(); });
    loop_.join();
  }

  /// The server is used on its own thread only.
  size_t sessions() {
    std::promise<size_t> sessions;
    asio::post(io_, [&] { sessions.set_value(server_.sessions()); });
    return sessions.get_future().get();
  }

  /// A client that has been greeted.
  RawClient& newClient() {
    RawClient& client = clients_.emplace_back(socket_);
    EXPECT_TRUE(client.greet());
    return client;
  }

  static void expectServed(const RawClient& client) {
    EXPECT_EQ(client.exchange(bridge::StatusRequest{}), (Reply{.result = 1, .output = "{}"}));
  }

  /// The agent answers with the failure and closes.
  static void expectLastReply(const RawClient& client, const Reply& reply) {
    const auto message = client.receive();
    ASSERT_TRUE(message);
    EXPECT_EQ(std::get<Reply>(*message), reply);
    EXPECT_EQ(client.readToEnd(), "");
  }

  const agent_testing::ScratchDirectory directory_;
  const std::string socket_ = directory_.at("socket");
  agent_testing::ServedModule module_;
  asio::io_context io_;
  BridgeServer server_{io_, socket_, module_.service()};
  std::list<RawClient> clients_;
  std::thread loop_{[this] { io_.run(); }};
};

TEST_F(ClientConnection, WhatIsNoHelloEndsTheSession) {
  for (const std::string hello : {"GET / HTTP/1.1\r\n\r\n", "LPBS\1\0\0\0", "lpbr\1\0\0\0"}) {
    const RawClient client(socket_);
    client.send(hello + std::string(8, '\0'));
    EXPECT_EQ(client.readToEnd(), "");
  }
  expectServed(newClient());
}

TEST_F(ClientConnection, AnotherVersionIsToldTheRightOne) {
  for (const uint32_t version : {0u, 2u, 0x01000000u, 0xFFFFFFFFu}) {
    const RawClient client(socket_);
    client.send(bridge::encodeHello(version));
    EXPECT_EQ(client.readToEnd(), bridge::encodeHello(1));
  }
}

TEST_F(ClientConnection, AHelloThatCannotBeSentEndsTheSession) {
  agent_testing::failNextSend(ENOBUFS);
  const RawClient client(socket_);
  EXPECT_FALSE(client.greet());
}

TEST_F(ClientConnection, AnEventThatCannotBeSentEndsTheSession) {
  const RawClient& writer = newClient();
  for (const bridge::Request& request : {bridge::Request(bridge::Subscription{}),
                                         bridge::Request(bridge::AgentCommand{"watch", ""})}) {
    const RawClient& told = newClient();
    EXPECT_EQ(told.exchange(request), (Reply{.result = 1}));
    agent_testing::failNextSend(ENOMEM);
    EXPECT_EQ(writer.exchange(bridge::Command{13, 0, adminRecord(20)}).result, 1);
    EXPECT_FALSE(told.receive()) << "it would wait for ever";
  }
}

TEST_F(ClientConnection, WhatIsNoRequestEndsTheSession) {
  const std::string command = bridge::encode(bridge::Request(bridge::Command{13, 1}));
  const std::string bodies[] = {
      "",
      std::string(1, '\0'),
      "\4",
      "\x81",
      "garbage",
      std::string("\2more", 5),                                // a status request and more
      command.substr(bridge::FRAME_HEAD_SIZE, 10),             // a command cut off
      "\1\x7F" + command.substr(bridge::FRAME_HEAD_SIZE + 2),  // with flags that nobody knows
  };
  for (const std::string& body : bodies) {
    const RawClient client(socket_);
    ASSERT_TRUE(client.greet());
    client.send(frameOf(body));
    expectLastReply(client, {0, Reason::MalformedFrame, "the frame holds no request"});
  }
}

TEST_F(ClientConnection, FramesMayHave16MiB) {
  const uint32_t limit = bridge::MAX_FRAME_SIZE;
  const RawClient& client = newClient();
  bridge::Command command{13, 0};
  const size_t overhead = bridge::encode(bridge::Request(command)).size() - bridge::FRAME_HEAD_SIZE;
  command.input = adminRecord(20);
  command.input.resize(limit - overhead);
  EXPECT_EQ(client.exchange(command).reason, Reason::IllegalValue);  // read to its end
  for (const char* head : {"\1\0\0\1", "\xFF\xFF\xFF\xFF"}) {
    const RawClient& greedy = newClient();
    greedy.send(std::string(head, 4));
    expectLastReply(greedy, {0, Reason::MalformedFrame,
                             "a frame of " + std::to_string(bridge::decodeFrameHead({head, 4})) +
                                 " bytes is over the limit of 16777216"});
  }
}

TEST_F(ClientConnection, RequestsMayArriveInPiecesOrTogether) {
  const RawClient client(socket_);
  const std::string status = bridge::encode(bridge::Request(bridge::StatusRequest{}));
  for (const char c : bridge::encodeHello() + status) client.send({c});
  EXPECT_EQ(client.read(bridge::HELLO_SIZE), bridge::encodeHello());
  EXPECT_TRUE(client.receive());

  client.send(status + status + status);
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(client.receive());
}

TEST_F(ClientConnection, ThereAreSoManySessions) {
  for (size_t i = 0; i < MAX_SESSIONS; ++i) (void)newClient();
  EXPECT_EQ(sessions(), MAX_SESSIONS);
  const RawClient turnedAway(socket_);
  EXPECT_EQ(turnedAway.readToEnd(), "");

  expectServed(clients_.back());
  clients_.pop_front();
  while (sessions() == MAX_SESSIONS) std::this_thread::yield();
  expectServed(newClient());
}

// What follows is too much for a sanitizer within the clients' time limit.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

// Together they are all that there is; what a session holds is given back.
TEST_F(ClientConnection, FramesForWhichThereIsNoRoomAreRefusedAndTheSessionsGoOn) {
  const std::string head = std::string("\0\0\0\1", 4);  // of the largest frame
  std::list<RawClient> greedy;
  for (size_t all = 0; all < MEMORY_LIMITS.all; all += bridge::MAX_FRAME_SIZE) {
    const RawClient& client = greedy.emplace_back(socket_);
    ASSERT_TRUE(client.greet());
    client.send(head);
    client.waitUntilTaken();
  }
  const RawClient& client = newClient();
  const std::string frame = head + std::string(bridge::MAX_FRAME_SIZE, '\2');
  const auto refusal = [&] {
    client.send(frame);
    return std::get<Reply>(client.receive().value());
  };
  EXPECT_EQ(refusal(), (Reply{.reason = Reason::Busy,
                              .text = "the requests and replies under way take all the memory that "
                                      "there is for user " +
                                      std::to_string(::geteuid()) + "; try again"}));
  expectServed(client);
  EXPECT_EQ(client.exchange(bridge::Command{13, 0, adminRecord(20)}).result, 1);
  greedy.clear();
  Reply reply;
  while ((reply = refusal()).reason == Reason::Busy) continue;
  EXPECT_EQ(reply.reason, Reason::MalformedFrame) << "it holds no request";
}

TEST_F(ClientConnection, RepliesThatNobodyTakesLeaveRoomForOthers) {
  constexpr size_t LARGE = 15 * 1024 * 1024;
  module_.server().POLICY->PSK_NAME.value = std::string(LARGE, 's');
  const bridge::Command readPolicy{
      13, 1, testing_support::encodeName(testing_support::Settings().policyGroup)};
  std::list<RawClient> sleepers;
  for (size_t all = LARGE; all < MEMORY_LIMITS.all; all += LARGE) {
    const RawClient& client = sleepers.emplace_back(socket_);
    ASSERT_TRUE(client.greet());
    client.send(bridge::encode(bridge::Request(readPolicy)));
    EXPECT_NE(client.read(1), "") << "the reply is under way";
  }
  const RawClient& client = newClient();
  EXPECT_EQ(client.exchange(readPolicy).reason, Reason::Busy);
  expectServed(client);
  sleepers.pop_back();
  Reply reply;
  while ((reply = client.exchange(readPolicy)).reason == Reason::Busy) continue;
  EXPECT_GT(reply.output.size(), LARGE);
}

#endif

TEST_F(ClientConnection, OneThatTakesNoReplyIsNotReadFrom) {
  module_.server().POLICY->PSK_NAME.value = std::string(4 * 1024 * 1024, 's');
  const bridge::Command readAdmin{
      13, 1, testing_support::encodeName(testing_support::Settings().adminGroup)};
  const RawClient& other = newClient();
  const bridge::Reply before = other.exchange(readAdmin);
  const RawClient& sleeper = newClient();
  const std::string beginning =
      bridge::encode(bridge::Request(bridge::Command{
          13, 1, testing_support::encodeName(testing_support::Settings().policyGroup)})) +
      bridge::encode(bridge::Request(bridge::Command{13, 0, adminRecord(77)}));
  sleeper.send(beginning);
  const std::string head = sleeper.read(bridge::FRAME_HEAD_SIZE);
  for (int i = 0; i < 300; ++i) ASSERT_EQ(other.exchange(readAdmin), before);
  (void)sleeper.read(bridge::decodeFrameHead(head));
  EXPECT_EQ(std::get<Reply>(sleeper.receive().value()).result, 1);
  EXPECT_EQ(agent_testing::exptimeIn(other.exchange(readAdmin)), 77u);
}

TEST_F(ClientConnection, ASubscriberThatTakesNoEventsIsClosed) {
  const RawClient& sleeper = newClient();
  EXPECT_EQ(sleeper.exchange(bridge::Subscription{}), (Reply{.result = 1}));
  const RawClient& writer = newClient();
  // The kernel takes some hundred events, the session a thousand.
  uint64_t revision = 1;
  while (sessions() == 2) {
    revision = writer.exchange(bridge::Command{13, 0, adminRecord(20)}).revision;
    ASSERT_NE(revision, 0u);
  }
  EXPECT_GT(revision, 1000u);
  const auto first = sleeper.receive();  // what the kernel has taken is still there
  ASSERT_TRUE(first);
  EXPECT_EQ(std::get<bridge::Event>(*first).revision, 2u);
  (void)sleeper.readToEnd();
  expectServed(writer);
}

TEST_F(ClientConnection, ASubscriberMayTakeItsEventsLate) {
  const RawClient& sleeper = newClient();
  EXPECT_EQ(sleeper.exchange(bridge::Subscription{}), (Reply{.result = 1}));
  const RawClient& writer = newClient();
  constexpr uint64_t LAST = 1000;  // more than the kernel takes, less than the session
  while (writer.exchange(bridge::Command{13, 0, adminRecord(20)}).revision != LAST) continue;
  for (uint64_t revision = 2; revision <= LAST; ++revision) {
    const auto event = sleeper.receive();
    ASSERT_TRUE(event);
    ASSERT_EQ(std::get<bridge::Event>(*event).revision, revision);
  }
  expectServed(sleeper);
}

TEST_F(ClientConnection, EventsComeAfterTheReplyToTheSubscription) {
  const RawClient& writer = newClient();
  std::atomic<bool> done = false;
  std::jthread writing([&] {
    while (!done) (void)writer.exchange(bridge::Command{13, 0, adminRecord(20)});
  });
  for (int i = 0; i < 100; ++i) {
    const RawClient& subscriber = newClient();
    EXPECT_EQ(subscriber.exchange(bridge::Subscription{}), (Reply{.result = 1}));
    const auto event = subscriber.receive();
    ASSERT_TRUE(event);
    EXPECT_TRUE(std::holds_alternative<bridge::Event>(*event));
    clients_.pop_back();
  }
  done = true;
}

TEST_F(ClientConnection, WhoWatchesIsToldBesidesTheReplies) {
  const RawClient& client = newClient();
  const bridge::AgentCommand watch{std::string(bridge::WATCH), ""};
  EXPECT_EQ(client.exchange(watch), (Reply{.result = 1}));
  EXPECT_EQ(client.exchange(watch), (Reply{.result = 1})) << "it does already";
  client.send(bridge::encode(bridge::Request(bridge::Command{13, 0, adminRecord(20)})));
  const auto message = client.receive();
  ASSERT_TRUE(message);
  const auto& notice = std::get<bridge::Notice>(*message);
  EXPECT_EQ(notice.group, "ADMIN");
  EXPECT_EQ(notice.pid, ::getpid());
  EXPECT_EQ(notice.changes.size(), 1U);
  const auto reply = client.receive();
  ASSERT_TRUE(reply);
  EXPECT_EQ(std::get<Reply>(*reply).revision, notice.revision) << "the reply comes behind it";
  expectServed(client);
}

TEST_F(ClientConnection, WhoWatchesAndTakesNothingIsClosed) {
  const RawClient& sleeper = newClient();
  EXPECT_EQ(sleeper.exchange(bridge::AgentCommand{"watch", ""}), (Reply{.result = 1}));
  const RawClient& writer = newClient();
  testing_support::Settings settings;
  size_t bytes = 0;
  constexpr size_t SIZE = bridge::MAX_NOTICED_VALUE;
  for (char c = 'a'; sessions() == 2; c = c == 'z' ? 'a' : static_cast<char>(c + 1)) {
    settings.updateGroup.SCHEDULE.value = std::string(SIZE, c);
    const std::string input = testing_support::encodeRecord(settings.updateGroup);
    ASSERT_EQ(writer.exchange(bridge::Command{13, 0, input}).result, 1);
    bytes += 2 * SIZE;
  }
  EXPECT_GE(bytes, MAX_PENDING_EVENTS);
  EXPECT_LT(bytes, MAX_PENDING_EVENTS + 4 * MEBIBYTE);
  expectServed(writer);
}

TEST_F(ClientConnection, TheEndIsTheLastThatWhoWatchesIsTold) {
  const RawClient& client = newClient();
  EXPECT_EQ(client.exchange(bridge::AgentCommand{"watch", ""}), (Reply{.result = 1}));
  const RawClient& writer = newClient();
  std::jthread writing([&] {
    while (true) {
      writer.send(bridge::encode(bridge::Request(bridge::Command{13, 0, adminRecord(20)})));
      if (!writer.receive()) return;
    }
  });
  uint64_t revision = 0;
  bridge::Notice last;
  while (const auto message = client.receive()) {
    last = std::get<bridge::Notice>(*message);
    if (last.what == bridge::Notice::Written) revision = last.revision;
    if (revision == 20) asio::post(io_, [this] { server_.stop(); });
  }
  EXPECT_EQ(last.what, bridge::Notice::AgentEnds);
  EXPECT_EQ(revision, module_.changes().revision("ADMIN")) << "every write was told";
}

TEST_F(ClientConnection, ASilentClientIsClosedWhenItHasBegunSomething) {
  const RawClient idle(socket_);
  ASSERT_TRUE(idle.greet());
  const RawClient& idleSubscriber = newClient();
  (void)idleSubscriber.exchange(bridge::Subscription{});

  const RawClient& inTwoParts = newClient();
  const std::string status = bridge::encode(bridge::Request(bridge::StatusRequest{}));
  inTwoParts.send(status.substr(0, 3));
  inTwoParts.waitUntilTaken();
  inTwoParts.send(status.substr(3));
  EXPECT_TRUE(inTwoParts.receive());

  const auto begin = std::chrono::steady_clock::now();
  const RawClient noHello(socket_);
  const RawClient halfHello(socket_);
  halfHello.send("LPB");
  const RawClient& halfHead = newClient();
  halfHead.send("\5");
  const RawClient& halfFrame = newClient();
  halfFrame.send(std::string("\5\0\0\0\1", 5));

  for (const RawClient* silent : {&noHello, &halfHello, &halfHead, &halfFrame}) {
    EXPECT_EQ(silent->readToEnd(), "");
  }
  EXPECT_GE(std::chrono::steady_clock::now() - begin, CLIENT_TIMEOUT);
  expectServed(inTwoParts);
  expectServed(idle);
  expectServed(idleSubscriber);
}

}  // namespace
}  // namespace agent
