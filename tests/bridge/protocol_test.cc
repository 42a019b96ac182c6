#include "bridge/protocol.h"

#include <gtest/gtest.h>

#include <tuple>

#include "tests/support/readable_bytes.h"

using testing_support::hex;
using testing_support::unhex;

namespace bridge {
namespace {

/// What stands behind the head of an encoded message.
std::string body(const std::string& frame) { return frame.substr(FRAME_HEAD_SIZE); }

auto fields(const Command& command) {
  return std::tie(command.module, command.command, command.input);
}

auto fields(const Reply& reply) {
  return std::tie(reply.result, reply.reason, reply.text, reply.output);
}

const Command READ_LOG{13, 1, std::string("\x03\0\0\0LOG", 7)};
const Command EMPTY_COMMAND{};
const Command EXTREME_COMMAND{-1, INT32_MIN, std::string("\0\xff\n", 3)};

const Reply DONE{1, Reason::None, "", std::string("\x02\0\0\0", 4)};
const Reply REFUSED{0, Reason::NotAuthorised, "no", ""};
const Reply EXTREME_REPLY{-1, Reason::ReplyTooLarge, std::string("a\0b", 3), "\xff"};

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

TEST(BridgeFrame, HeadIsTheSizeOfWhatFollows) {
  EXPECT_EQ(decodeFrameHead(unhex("00 00 00 00")), 0U);
  EXPECT_EQ(decodeFrameHead(unhex("00 00 00 01")), MAX_FRAME_SIZE);
  EXPECT_EQ(decodeFrameHead(unhex("FF FF FF FF")), 0xFFFFFFFFU);
  for (const std::string& frame : {encode(READ_LOG), encode(EMPTY_COMMAND), encode(EXTREME_COMMAND),
                                   encode(DONE), encode(REFUSED), encode(EXTREME_REPLY)}) {
    EXPECT_EQ(decodeFrameHead(frame), frame.size() - FRAME_HEAD_SIZE);
  }
}

TEST(BridgeCommand, Bytes) {
  EXPECT_EQ(hex(encode(READ_LOG)),
            "0F 00 00 00 "  // size
            "0D 00 00 00 "  // module
            "01 00 00 00 "  // command
            "03 00 00 00 4C 4F 47");
  EXPECT_EQ(hex(encode(EMPTY_COMMAND)), "08 00 00 00 00 00 00 00 00 00 00 00");
  EXPECT_EQ(hex(encode(EXTREME_COMMAND)), "0B 00 00 00 FF FF FF FF 00 00 00 80 00 FF 0A");
}

TEST(BridgeCommand, ComesBackAsItWas) {
  for (const Command& command : {READ_LOG, EMPTY_COMMAND, EXTREME_COMMAND}) {
    Command decoded{99, 99, "old"};
    ASSERT_TRUE(decode(body(encode(command)), decoded));
    EXPECT_EQ(fields(decoded), fields(command));
  }
}

TEST(BridgeCommand, IsRefusedIfItsFixedPartIsCutOff) {
  const std::string fixedPart = body(encode(EMPTY_COMMAND));
  ASSERT_EQ(fixedPart.size(), 8U);
  for (size_t size = 0; size < fixedPart.size(); ++size) {
    Command decoded;
    EXPECT_FALSE(decode(fixedPart.substr(0, size), decoded)) << size;
  }
}

TEST(BridgeReply, Bytes) {
  EXPECT_EQ(hex(encode(DONE)),
            "10 00 00 00 "  // size
            "01 00 00 00 "  // result
            "00 00 00 00 "  // reason
            "00 00 00 00 "  // length of the text
            "02 00 00 00");
  EXPECT_EQ(hex(encode(REFUSED)),
            "0E 00 00 00 "
            "00 00 00 00 "
            "02 00 00 00 "
            "02 00 00 00 6E 6F");
  EXPECT_EQ(hex(encode(EXTREME_REPLY)),
            "10 00 00 00 FF FF FF FF 07 00 00 00 03 00 00 00 61 00 62 FF");
}

TEST(BridgeReply, NumbersOfTheReasons) {
  EXPECT_EQ(static_cast<uint32_t>(Reason::None), 0U);
  EXPECT_EQ(static_cast<uint32_t>(Reason::ModuleRefused), 1U);
  EXPECT_EQ(static_cast<uint32_t>(Reason::NotAuthorised), 2U);
  EXPECT_EQ(static_cast<uint32_t>(Reason::MalformedInput), 3U);
  EXPECT_EQ(static_cast<uint32_t>(Reason::NoSuchModule), 4U);
  EXPECT_EQ(static_cast<uint32_t>(Reason::MalformedFrame), 5U);
  EXPECT_EQ(static_cast<uint32_t>(Reason::ModuleFailed), 6U);
  EXPECT_EQ(static_cast<uint32_t>(Reason::ReplyTooLarge), 7U);
}

TEST(BridgeReply, ComesBackAsItWas) {
  for (const Reply& reply : {DONE, REFUSED, EXTREME_REPLY}) {
    Reply decoded{99, Reason::MalformedFrame, "old", "old"};
    ASSERT_TRUE(decode(body(encode(reply)), decoded));
    EXPECT_EQ(fields(decoded), fields(reply));
  }
}

TEST(BridgeReply, IsRefusedIfItIsCutOffBeforeTheEndOfItsText) {
  const std::string fixedPart = body(encode(REFUSED));
  for (size_t size = 0; size < fixedPart.size(); ++size) {
    Reply decoded;
    EXPECT_FALSE(decode(fixedPart.substr(0, size), decoded)) << size;
  }
}

TEST(BridgeReply, IsRefusedIfItsTextIsLongerThanItsFrame) {
  for (const char* length : {"01 00 00 00", "FC FF FF FF", "FF FF FF FF"}) {
    Reply decoded;
    EXPECT_FALSE(decode(unhex("01 00 00 00 00 00 00 00" + std::string(length)), decoded)) << length;
  }
}

TEST(BridgeReply, KeepsReasonsThatAreNotKnownHere) {
  Reply decoded;
  ASSERT_TRUE(decode(unhex("00 00 00 00 E7 03 00 00 00 00 00 00"), decoded));
  EXPECT_EQ(static_cast<uint32_t>(decoded.reason), 999U);
}

}  // namespace
}  // namespace bridge
