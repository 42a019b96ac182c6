#include "lparams/params/command_stream.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/readable_bytes.h"

namespace LPARAMS::Server {
namespace {

using testing_support::hex;
using testing_support::unhex;
using namespace std::string_literals;

/// Takes a value from the bytes that pairs of hexadecimal digits stand for.
template <typename T>
T taken(const char* pairs, T before = {}) {
  const std::string bytes = unhex(pairs);
  CommandStreamIn in(bytes);
  take(in, before);
  EXPECT_EQ(in.pos, in.size) << "of " << pairs;
  return before;
}

/// Expects that the bytes are too short for a value, and that the value then stays as it was.
template <typename T>
void expectTooShort(const char* pairs, const T& before, uint32_t start = 0) {
  SCOPED_TRACE("bytes: "s + pairs);
  const std::string bytes = unhex(pairs);
  CommandStreamIn in(bytes);
  in.pos = start;
  T value = before;
  try {
    take(in, value);
    ADD_FAILURE() << "nothing was thrown";
  } catch (const char* thrown) {
    EXPECT_STREQ(thrown, "CommandStreamError");
  }
  EXPECT_EQ(value, before);
}

template <typename T>
std::string putHex(T value) {
  std::string bytes;
  CommandStreamOut out{bytes};
  put(out, value);
  return hex(bytes);
}

TEST(CommandStreamIn, StartsAtTheFirstByteOfTheCallersString) {
  const std::string bytes("a\0b", 3);
  const CommandStreamIn in(bytes);
  EXPECT_EQ(in.size, 3u);
  EXPECT_EQ(in.pos, 0u);
  EXPECT_EQ(in.data, bytes.data());
}

TEST(CommandStreamIn, IntegersAreLittleEndian) {
  EXPECT_EQ(taken<unsigned short>("F4 01"), 500);
  EXPECT_EQ(taken<unsigned int>("01 02 03 04"), 0x04030201u);
  EXPECT_EQ(taken<unsigned int>("FF FF FF FF"), 4294967295u);
  EXPECT_EQ(taken<int>("FB FF FF FF"), -5);
  EXPECT_EQ(taken<int>("00 00 00 80"), -2147483647 - 1);
}

TEST(CommandStreamIn, OnlyTheByteOneIsTrue) {
  EXPECT_TRUE(taken<bool>("01", false));
  for (const char* byte : {"00", "02", "80", "81", "FF"}) EXPECT_FALSE(taken<bool>(byte, true));
}

TEST(CommandStreamIn, AStringIsItsLengthAndItsBytes) {
  EXPECT_EQ(taken<std::string>("00 00 00 00", "before"), "");
  EXPECT_EQ(taken<std::string>("03 00 00 00 61 62 63", "a longer text than that"), "abc");
  EXPECT_EQ(taken<std::string>("04 00 00 00 00 FF 0A 00"), "\0\xFF\n\0"s);
}

TEST(CommandStreamIn, NothingIsAligned) {
  const std::string bytes = unhex("01 F4 01 02 03 04 05 01 00 00 00 78");
  CommandStreamIn in(bytes);
  bool flag = false;
  unsigned short port = 0;
  unsigned int count = 0;
  std::string text;
  take(in, flag);
  take(in, port);
  take(in, count);
  take(in, text);
  EXPECT_TRUE(flag);
  EXPECT_EQ(port, 500);
  EXPECT_EQ(count, 0x05040302u);
  EXPECT_EQ(text, "x");
  EXPECT_EQ(in.pos, in.size);
}

TEST(CommandStreamIn, TooFewBytesThrowAndLeaveTheValue) {
  expectTooShort("", true);
  expectTooShort<unsigned short>("", 7);
  expectTooShort<unsigned short>("01", 7);
  for (const char* bytes : {"", "01", "01 02", "01 02 03"}) {
    expectTooShort(bytes, 7u);
    expectTooShort(bytes, -7);
    expectTooShort(bytes, "before"s);
  }
}

TEST(CommandStreamIn, AStringShorterThanItsLengthThrowsAndLeavesTheValue) {
  expectTooShort("01 00 00 00", "before"s);
  expectTooShort("03 00 00 00 61 62", "before"s);
  expectTooShort("FF FF FF 7F 61 62", "before"s);
  expectTooShort("00 00 00 80 61 62", "before"s);
}

TEST(CommandStreamIn, ALengthThatWrapsThePositionThrows) {
  for (const char* length :
       {"FA FF FF FF", "FB FF FF FF", "FC FF FF FF", "FD FF FF FF", "FE FF FF FF", "FF FF FF FF"}) {
    expectTooShort(length, "before"s);
    expectTooShort((length + " 61 62 63"s).c_str(), "before"s);
    expectTooShort(("00 00 "s + length + " 61 62 63").c_str(), "before"s, 2);
  }
}

TEST(CommandStreamIn, APositionThatWrapsThrows) {
  for (const uint32_t start : {0xFFFFFFFCu, 0xFFFFFFFEu, 0xFFFFFFFFu}) {
    expectTooShort("01 02 03 04 05 06 07 08", 7u, start);
    expectTooShort("01 02 03 04 05 06 07 08", "before"s, start);
  }
  expectTooShort<unsigned short>("01 02 03 04", 7, 0xFFFFFFFE);
  expectTooShort("01 02 03 04", false, 0xFFFFFFFF);
}

TEST(CommandStreamIn, APositionPastTheEndThrows) {
  expectTooShort("01 02 03 04", 7u, 1);
  expectTooShort("01 02 03 04", 7u, 4);
  expectTooShort("01 02 03 04", 7u, 100);
}

TEST(CommandStreamIn, APositionHasMovedByTheWidthWhenACheckFails) {
  const std::string bytes = unhex("05 00 00 00 61");
  CommandStreamIn in(bytes);
  std::string text;
  EXPECT_THROW(take(in, text), const char*);
  EXPECT_EQ(in.pos, 9u);
}

TEST(CommandStreamOut, ValuesInTheirEncodings) {
  EXPECT_EQ(putHex(true), "01");
  EXPECT_EQ(putHex(false), "00");
  EXPECT_EQ(putHex<unsigned short>(4500), "94 11");
  EXPECT_EQ(putHex(4294967295u), "FF FF FF FF");
  EXPECT_EQ(putHex(0x04030201u), "01 02 03 04");
  EXPECT_EQ(putHex(-5), "FB FF FF FF");
  EXPECT_EQ(putHex(""s), "00 00 00 00");
  EXPECT_EQ(putHex("a\0\xFF"s), "03 00 00 00 61 00 FF");
}

TEST(CommandStreamOut, EveryWriteAppends) {
  std::string bytes = "kept";
  CommandStreamOut out{bytes};
  put(out, true);
  put(out, "x"s);
  EXPECT_EQ(bytes, "kept\1\1\0\0\0x"s);
}

}  // namespace
}  // namespace LPARAMS::Server
