#include "bridge/protocol.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/support/readable_bytes.h"

using testing_support::hex;
using testing_support::unhex;

namespace bridge {
namespace {

/// What stands behind the head of an encoded message.
std::string body(const std::string& frame) { return frame.substr(FRAME_HEAD_SIZE); }

/// A message and its frame. The head of a frame is the size of what follows.
template <typename Content>
struct Row {
  Content content;
  const char* bytes;
  size_t fixedSize;  ///< of the body: cut off before, it is refused
};

const std::vector<Row<Request>> REQUESTS = {
    {Command{13, 1, std::string("\x03\0\0\0LOG", 7)},
     "19 00 00 00 01 00 0D 00 00 00 01 00 00 00 00 00 00 00 00 00 00 00 03 00 00 00 4C 4F 47", 18},
    {Command{}, "12 00 00 00 01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00", 18},
    {Command{-1, INT32_MIN, std::string("\0\xff\n", 3), 0x0807060504030201, true},
     "15 00 00 00 01 03 FF FF FF FF 00 00 00 80 01 02 03 04 05 06 07 08 00 FF 0A", 18},
    {Command{13, 0, "", 0}, "12 00 00 00 01 01 0D 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00",
     18},
    {Command{13, 2, "", {}, true},
     "12 00 00 00 01 02 0D 00 00 00 02 00 00 00 00 00 00 00 00 00 00 00", 18},
    {StatusRequest{}, "01 00 00 00 02", 1},
    {Subscription{}, "01 00 00 00 03", 1},
    {AgentCommand{"get", "a\n"}, "0A 00 00 00 04 03 00 00 00 67 65 74 61 0A", 8},
    {AgentCommand{}, "05 00 00 00 04 00 00 00 00", 5},
};

const std::vector<Row<Message>> MESSAGES = {
    {Reply{1, Reason::None, "", std::string("\x02\0\0\0", 4), 5},
     "19 00 00 00 81 01 00 00 00 00 00 00 00 05 00 00 00 00 00 00 00 00 00 00 00 02 00 00 00", 21},
    {Reply{0, Reason::NotAuthorised, "no"},
     "17 00 00 00 81 00 00 00 00 02 00 00 00 00 00 00 00 00 00 00 00 02 00 00 00 6E 6F", 23},
    {Reply{-1, Reason::ReplyTooLarge, std::string("a\0b", 3), "\xff", 0x0807060504030201},
     "19 00 00 00 81 FF FF FF FF 07 00 00 00 01 02 03 04 05 06 07 08 03 00 00 00 61 00 62 FF", 24},
    {Event{"IKE", 3, 1000, 42},
     "14 00 00 00 82 03 00 00 00 00 00 00 00 E8 03 00 00 2A 00 00 00 49 4B 45", 17},
    {Notice{Notice::Refused, 0x0807060504030201, 1000, -1, 3, Reason::Conflict, 7, "ctl", "IKE",
            "no"},
     "36 00 00 00 83 06 01 02 03 04 05 06 07 08 E8 03 00 00 FF FF FF FF 03 00 00 00 00 00 00 00 "
     "09 00 00 00 07 00 00 00 03 00 00 00 63 74 6C 03 00 00 00 49 4B 45 02 00 00 00 6E 6F",
     54},
    {Notice{.group = "LOG",
            .changes = {{NoticedChange::Value, {"A", false, "1", {}, {}, "0"}},
                        {NoticedChange::UserAdded, {.name = "U"}},
                        {NoticedChange::Value, {.name = "S", .secret = true}}}},
     "50 00 00 00 83 01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
     "00 00 00 00 00 00 00 00 00 00 00 00 03 00 00 00 4C 4F 47 00 00 00 00 "
     "01 01 00 00 00 41 11 01 00 00 00 31 01 00 00 00 30 "
     "02 01 00 00 00 55 00 01 01 00 00 00 53 08",
     49},
};

TEST(BridgeHello, IsTheMagicAndTheVersion) {
  EXPECT_EQ(hex(encodeHello()), "4C 50 42 52 01 00 00 00");
  EXPECT_EQ(hex(encodeHello(0x04030201)), "4C 50 42 52 01 02 03 04");
  EXPECT_EQ(encodeHello().size(), HELLO_SIZE);
}

TEST(BridgeHello, GivesBackEveryVersion) {
  for (const uint32_t version : {0U, PROTOCOL_VERSION, 2U, 0xFFFFFFFFU}) {
    uint32_t decoded = ~version;
    EXPECT_TRUE(decodeHello(encodeHello(version), decoded));
    EXPECT_EQ(decoded, version);
  }
}

TEST(BridgeHello, IsRefusedIfAnyByteOfTheMagicDiffers) {
  for (size_t i = 0; i < HELLO_MAGIC.size(); ++i) {
    std::string hello = encodeHello();
    hello[i] ^= '\x20';
    uint32_t version = 0;
    EXPECT_FALSE(decodeHello(hello, version)) << hello;
  }
}

TEST(BridgeHello, IsRefusedIfItIsCutOff) {
  const std::string hello = encodeHello();
  for (size_t size = 0; size < hello.size(); ++size) {
    uint32_t version = 0;
    EXPECT_FALSE(decodeHello(hello.substr(0, size), version)) << size;
  }
}

TEST(BridgeFrame, HeadIsASize) {
  EXPECT_EQ(decodeFrameHead(unhex("00 00 00 00")), 0U);
  EXPECT_EQ(decodeFrameHead(unhex("00 00 00 01")), MAX_FRAME_SIZE);
  EXPECT_EQ(decodeFrameHead(unhex("FF FF FF FF")), 0xFFFFFFFFU);
}

TEST(BridgeRequest, Bytes) {
  for (const auto& row : REQUESTS) EXPECT_EQ(hex(encode(row.content)), row.bytes);
}

TEST(BridgeRequest, ComesBackAsItWas) {
  for (const auto& row : REQUESTS) {
    EXPECT_EQ(decodeRequest(body(unhex(row.bytes))), row.content) << row.bytes;
  }
}

TEST(BridgeRequest, IsRefusedIfItsFixedPartIsCutOff) {
  for (const auto& row : REQUESTS) {
    for (size_t size = 0; size < row.fixedSize; ++size) {
      EXPECT_FALSE(decodeRequest(body(unhex(row.bytes)).substr(0, size))) << row.bytes << size;
    }
  }
}

TEST(BridgeRequest, IsRefusedIfItIsOfNoKnownKindOrHasAnUnknownFlag) {
  for (const char* bytes : {"00", "05", "81", "82", "FF", "02 00", "03 00",
                            "01 04 0D 00 00 00 01 00 00 00 00 00 00 00 00 00 00 00"}) {
    EXPECT_FALSE(decodeRequest(unhex(bytes))) << bytes;
  }
}

TEST(BridgeMessage, Bytes) {
  for (const auto& row : MESSAGES) EXPECT_EQ(hex(encode(row.content)), row.bytes);
}

TEST(BridgeMessage, ComesBackAsItWas) {
  for (const auto& row : MESSAGES) {
    EXPECT_EQ(decodeMessage(body(unhex(row.bytes))), row.content) << row.bytes;
  }
}

TEST(BridgeMessage, IsRefusedIfItsFixedPartOrItsTextIsCutOff) {
  for (const auto& row : MESSAGES) {
    for (size_t size = 0; size < row.fixedSize; ++size) {
      EXPECT_FALSE(decodeMessage(body(unhex(row.bytes)).substr(0, size))) << row.bytes << size;
    }
  }
}

TEST(BridgeMessage, IsRefusedIfItIsOfNoKnownKind) {
  for (const char* bytes : {"00", "01", "02", "03", "80", "84", "FF"}) {
    EXPECT_FALSE(decodeMessage(unhex(bytes))) << bytes;
  }
}

TEST(BridgeNotice, IsRefusedIfAChangeIsCutOff) {
  const Notice empty{.group = "LOG"};
  Notice notice = empty;
  notice.changes = {{NoticedChange::Value, {"A", false, "1", {}, {}, "0"}}};
  const std::string whole = body(encode(Message(notice)));
  for (size_t size = body(encode(Message(empty))).size() + 1; size < whole.size(); ++size) {
    EXPECT_FALSE(decodeMessage(whole.substr(0, size))) << size;
  }
}

TEST(BridgeNotice, IsRefusedIfItsChangesAreMoreThanThereMayBe) {
  Notice notice;
  notice.changes.resize(MAX_NOTICED_CHANGES / 6);  // the bytes of an empty one
  EXPECT_EQ(decodeMessage(body(encode(Message(notice)))), Message(notice));
  notice.changes.emplace_back();
  EXPECT_FALSE(decodeMessage(body(encode(Message(notice)))));
}

TEST(BridgeNotice, NumbersOfWhatHasHappenedAndOfChanges) {
  const Notice::What happened[] = {
      Notice::Written,          Notice::WrittenInPart,    Notice::Saved,
      Notice::NothingToSave,    Notice::NotSaved,         Notice::Refused,
      Notice::DegradationBegan, Notice::DegradationEnded, Notice::AgentEnds};
  for (int number = 1; const auto what : happened) EXPECT_EQ(what, number++);
  const NoticedChange::Kind kinds[] = {NoticedChange::Value, NoticedChange::UserAdded,
                                       NoticedChange::UserRemoved, NoticedChange::UserOrder,
                                       NoticedChange::LongValue};
  for (int number = 1; const auto kind : kinds) EXPECT_EQ(kind, number++);
}

TEST(BridgeReply, IsRefusedIfItsTextIsLongerThanItsFrame) {
  for (const char* length : {"01 00 00 00", "FC FF FF FF", "FF FF FF FF"}) {
    EXPECT_FALSE(decodeMessage(
        unhex("81 01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00" + std::string(length))))
        << length;
  }
}

TEST(BridgeReply, NumbersOfTheReasons) {
  const Reason inOrder[] = {
      Reason::None,         Reason::ModuleRefused,  Reason::NotAuthorised, Reason::MalformedInput,
      Reason::NoSuchModule, Reason::MalformedFrame, Reason::ModuleFailed,  Reason::ReplyTooLarge,
      Reason::IllegalValue, Reason::Conflict,       Reason::SaveRefused,   Reason::NoSuchCommand,
      Reason::Busy};
  for (uint32_t number = 0; number < std::size(inOrder); ++number) {
    EXPECT_EQ(static_cast<uint32_t>(inOrder[number]), number);
  }
}

TEST(BridgeReply, KeepsReasonsThatAreNotKnownHere) {
  const auto message =
      decodeMessage(unhex("81 00 00 00 00 E7 03 00 00 00 00 00 00 00 00 00 00 00 00 00 00"));
  ASSERT_TRUE(message);
  EXPECT_EQ(static_cast<uint32_t>(std::get<Reply>(*message).reason), 999U);
}

}  // namespace
}  // namespace bridge
