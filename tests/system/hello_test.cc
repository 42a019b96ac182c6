// How a session begins.
#include <gmock/gmock.h>

#include <string>

#include "tests/support/readable_bytes.h"
#include "tests/system/system_test.h"

using bridge::encodeHello;
using testing::HasSubstr;
using testing_support::inQuotes;

namespace system_testing {
namespace {

class Hello : public SystemTest {
 protected:
  void SetUp() override { start(); }
};

TEST_F(Hello, IsAnsweredWithTheAgents) {
  const BridgeClient client(socketPath);
  client.send(encodeHello());
  EXPECT_EQ(client.receive(bridge::HELLO_SIZE), encodeHello());
  EXPECT_EQ(client.read("ADMIN").result, 1);
}

TEST_F(Hello, OfAnotherVersionIsAnsweredWithTheRightOneAndTheEnd) {
  for (const uint32_t version : {0U, bridge::PROTOCOL_VERSION + 1, 0xFFFFFFFFU}) {
    const BridgeClient client(socketPath);
    client.send(encodeHello(version));
    EXPECT_EQ(client.receive(bridge::HELLO_SIZE), encodeHello()) << version;
    EXPECT_TRUE(client.isClosed()) << version;
  }
}

TEST_F(Hello, OfAnotherProtocolEndsTheSessionWithoutAWord) {
  for (const std::string& bytes :
       {std::string("GET / HTTP/1.1\r\n\r\n"), std::string(8, '\0'), std::string("lpbr\1\0\0\0", 8),
        std::string("LPB\0\1\0\0\0", 8), std::string(8, '\xFF'), encodeHello().substr(1) + "x"}) {
    const BridgeClient client(socketPath);
    client.send(bytes);
    EXPECT_TRUE(client.isClosed()) << inQuotes(bytes);
  }
  EXPECT_TRUE(connect().read("ADMIN").result) << "others are served";
  EXPECT_THAT(agent->log(), HasSubstr("session closed: the client does not speak the bridge "));
}

TEST_F(Hello, MayArriveByteByByteAsEverythingElse) {
  const BridgeClient client(socketPath);
  for (const char byte : encodeHello()) client.send({&byte, 1});
  EXPECT_EQ(client.receive(bridge::HELLO_SIZE), encodeHello());
  const std::string frame =
      bridge::encode(bridge::Command{SETTINGS_MODULE, READ_GROUP, groupInput("ADMIN")});
  for (const char byte : frame) client.send({&byte, 1});
  EXPECT_EQ(client.receiveReply().result, 1);
}

TEST_F(Hello, MayArriveTogetherWithCommands) {
  const BridgeClient client(socketPath);
  client.send(encodeHello() + bridge::encode(bridge::Command{SETTINGS_MODULE, SAVE, {}}) +
              bridge::encode(bridge::Command{SETTINGS_MODULE, READ_GROUP, groupInput("ADMIN")}));
  EXPECT_EQ(client.receive(bridge::HELLO_SIZE), encodeHello());
  EXPECT_EQ(client.receiveReply().output, "");
  EXPECT_NE(client.receiveReply().output, "");
}

TEST_F(Hello, IsNotWaitedForIfTheClientGoes) {
  for (size_t size = 0; size < bridge::HELLO_SIZE; ++size) {
    const BridgeClient client(socketPath);
    client.send(encodeHello().substr(0, size));
    client.endSending();
    EXPECT_TRUE(client.isClosed()) << size;
  }
}

}  // namespace
}  // namespace system_testing
