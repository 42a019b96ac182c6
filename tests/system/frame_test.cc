// Frames of every size, whole and cut off.
#include <gmock/gmock.h>

#include <string>

#include "lparams/catalogue/policy_group.h"
#include "tests/support/param_forms.h"
#include "tests/support/readable_bytes.h"
#include "tests/system/system_test.h"

using bridge::Reason;
using testing_support::unhex;

namespace system_testing {
namespace {

class Frame : public SystemTest {
 protected:
  void SetUp() override {
    flags.emplace_back("--accept-any");  // for a text of any size
    start();
  }

  static std::string readAdmin() {
    return bridge::encode(bridge::Command{SETTINGS_MODULE, READ_GROUP, groupInput("ADMIN")});
  }

  /// The record of a POLICY group that makes its write command a frame of that size.
  static std::string policyRecordForFrameOf(size_t size) {
    LPARAMS::Server::POLICY_t policy;
    const size_t rest =
        bridge::encode(bridge::Command{SETTINGS_MODULE, WRITE_GROUP,
                                       groupInput("POLICY", testing_support::wireBytes(policy))})
            .size() -
        bridge::FRAME_HEAD_SIZE;
    policy.PMP_SERVERS.value = std::string(size - rest, 's');
    return testing_support::wireBytes(policy);
  }
};

TEST_F(Frame, OfSixteenMebibytesIsServedAndAReplyOfThatSizeIsNot) {
  const BridgeClient client = connect();
  const std::string record = policyRecordForFrameOf(bridge::MAX_FRAME_SIZE);
  EXPECT_EQ(client.write("POLICY", record).reason, Reason::None);

  const bridge::Reply reply = client.read("POLICY");
  EXPECT_EQ(reply.result, 0);
  EXPECT_EQ(reply.reason, Reason::ReplyTooLarge);
  EXPECT_EQ(reply.text,
            "the output of " + std::to_string(record.size()) + " bytes does not fit a frame");
  EXPECT_EQ(reply.output, "");
  EXPECT_EQ(client.read("ADMIN").result, 1) << "the session goes on";
}

TEST_F(Frame, OfAReplyHoldsUpToItsLimit) {
  const BridgeClient client = connect();
  // What a write carries besides the record is the head of the frame's content and the name.
  const size_t besides = 18 + groupInput("POLICY").size();
  const std::string fits = policyRecordForFrameOf(bridge::MAX_REPLY_OUTPUT + besides);
  ASSERT_EQ(fits.size(), bridge::MAX_REPLY_OUTPUT);
  EXPECT_EQ(client.write("POLICY", fits).result, 1);
  EXPECT_EQ(client.read("POLICY").output, fits);

  const std::string tooLong = policyRecordForFrameOf(bridge::MAX_REPLY_OUTPUT + besides + 1);
  EXPECT_EQ(client.write("POLICY", tooLong).result, 1);
  EXPECT_EQ(client.read("POLICY").reason, Reason::ReplyTooLarge);
}

TEST_F(Frame, OverTheLimitIsRefusedByItsHeadAndEndsTheSession) {
  for (const auto& [head, size] :
       {std::pair{"01 00 00 01", "16777217"}, std::pair{"FF FF FF 7F", "2147483647"},
        std::pair{"FF FF FF FF", "4294967295"}}) {
    const BridgeClient client = connect();
    client.send(unhex(head));
    const bridge::Reply reply = client.receiveReply();
    EXPECT_EQ(reply.reason, Reason::MalformedFrame);
    EXPECT_EQ(reply.text,
              "a frame of " + std::string(size) + " bytes is over the limit of 16777216");
    EXPECT_TRUE(client.isClosed());
  }
}

TEST_F(Frame, ThatIsTooShortForACommandIsRefusedAndEndsTheSession) {
  for (char size = 0; size < 18; ++size) {
    const BridgeClient client = connect();
    client.send(std::string{size, 0, 0, 0} + std::string(static_cast<size_t>(size), '\1'));
    const bridge::Reply reply = client.receiveReply();
    EXPECT_EQ(reply.reason, Reason::MalformedFrame);
    EXPECT_EQ(reply.text, "the frame holds no request");
    EXPECT_TRUE(client.isClosed());
  }
}

TEST_F(Frame, AfterARefusedOneIsNotServed) {
  const BridgeClient client = connect();
  client.send(unhex("00 00 00 00") + bridge::encode(bridge::Command{SETTINGS_MODULE, SAVE}));
  EXPECT_EQ(client.receiveReply().reason, Reason::MalformedFrame);
  EXPECT_TRUE(client.isClosed());
}

TEST_F(Frame, FollowsFrameWithoutWaitingForReplies) {
  constexpr int COMMANDS = 500;
  const BridgeClient client = connect();
  std::string frames;
  for (int i = 0; i < COMMANDS; ++i) {
    const std::string_view group = i % 3 == 0 ? "ADMIN" : "NONE";
    frames += bridge::encode(bridge::Command{SETTINGS_MODULE, READ_GROUP, groupInput(group)});
  }
  client.send(frames);
  for (int i = 0; i < COMMANDS; ++i) {
    EXPECT_EQ(client.receiveReply().result, i % 3 == 0 ? 1 : 0) << "reply " << i;
  }
}

TEST_F(Frame, IsAnsweredAlsoIfTheClientSendsNoMore) {
  const BridgeClient client = connect();
  const std::string frame = readAdmin();
  client.send(frame + frame + frame.substr(0, 7));
  client.endSending();
  EXPECT_EQ(client.receiveReply().result, 1);
  EXPECT_EQ(client.receiveReply().result, 1);
  EXPECT_TRUE(client.isClosed());
}

TEST_F(Frame, OfAClientThatGoesAwayDoesNoHarm) {
  const std::string frame = readAdmin();
  for (size_t size = 1; size < frame.size(); ++size) connect().send(frame.substr(0, size));
  std::string many;
  for (int i = 0; i < 1000; ++i) many += frame;
  for (int i = 0; i < 10; ++i) connect().send(many);
  EXPECT_EQ(connect().read("ADMIN").result, 1);
}

}  // namespace
}  // namespace system_testing
