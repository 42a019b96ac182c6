#include "bridge/frame_buffer.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "bridge/protocol.h"

namespace bridge {
namespace {

/// The head of a frame of that many bytes.
std::string headOf(uint32_t size) {
  std::string head;
  for (unsigned i = 0; i < FRAME_HEAD_SIZE; ++i) head += static_cast<char>(size >> (8 * i));
  return head;
}

std::string frameOf(const std::string& body) {
  return headOf(static_cast<uint32_t>(body.size())) + body;
}

TEST(FrameBuffer, GivesOutAFrameOnceItIsWhole) {
  FrameBuffer buffer;
  const std::string frame = frameOf("hello");
  for (const char byte : frame) {
    EXPECT_FALSE(buffer.holdsFrame());
    EXPECT_EQ(buffer.takeFrame(), std::nullopt);
    buffer.append({&byte, 1});
    EXPECT_FALSE(buffer.empty());
  }
  EXPECT_TRUE(buffer.holdsFrame());
  EXPECT_EQ(buffer.takeFrame(), "hello");
  EXPECT_TRUE(buffer.empty());
  EXPECT_EQ(buffer.takeFrame(), std::nullopt);
}

TEST(FrameBuffer, FramesMayArriveInAnyPieces) {
  const std::string bytes = frameOf("one") + frameOf("") + frameOf(std::string(300, '\0'));
  for (size_t first = 0; first <= bytes.size(); ++first) {
    FrameBuffer buffer;
    std::vector<std::string> frames;
    for (const std::string& piece : {bytes.substr(0, first), bytes.substr(first)}) {
      buffer.append(piece);
      while (const auto frame = buffer.takeFrame()) frames.push_back(*frame);
    }
    EXPECT_EQ(frames, (std::vector<std::string>{"one", "", std::string(300, '\0')})) << first;
    EXPECT_TRUE(buffer.empty());
  }
}

TEST(FrameBuffer, TheHelloComesFirst) {
  FrameBuffer buffer;
  const std::string hello = encodeHello();
  for (const char byte : hello) {
    EXPECT_EQ(buffer.takeHello(), std::nullopt);
    buffer.append({&byte, 1});
  }
  buffer.append(frameOf("next"));
  EXPECT_EQ(buffer.takeHello(), hello);
  EXPECT_EQ(buffer.takeFrame(), "next");
}

TEST(FrameBuffer, ABrokenHelloIsGivenOutAsItIs) {
  FrameBuffer buffer;
  buffer.append("GET / HTTP/1.1");
  EXPECT_EQ(buffer.takeHello(), "GET / HT");
}

TEST(FrameBuffer, TheLargestFrame) {
  FrameBuffer buffer;
  buffer.append(headOf(MAX_FRAME_SIZE));
  buffer.append(std::string(MAX_FRAME_SIZE - 1, 'x'));
  EXPECT_FALSE(buffer.oversize());
  EXPECT_FALSE(buffer.holdsFrame());
  buffer.append("x");
  const auto frame = buffer.takeFrame();
  ASSERT_TRUE(frame);
  EXPECT_EQ(frame->size(), MAX_FRAME_SIZE);
}

TEST(FrameBuffer, NothingIsGivenOutOfATooLargeFrame) {
  for (const uint32_t size : {MAX_FRAME_SIZE + 1, 0x80000000u, 0xFFFFFFFFu}) {
    FrameBuffer buffer;
    const std::string head = headOf(size);
    buffer.append(head.substr(0, 3));
    EXPECT_EQ(buffer.oversize(), std::nullopt);
    buffer.append(head.substr(3) + frameOf("behind it"));
    EXPECT_EQ(buffer.oversize(), size);
    EXPECT_FALSE(buffer.holdsFrame());
    EXPECT_EQ(buffer.takeFrame(), std::nullopt);
  }
}

TEST(FrameBuffer, DropsAFrameThatIsNotWanted) {
  const std::string unwanted = std::string("\x0A\0\0\0", 4) + "ten bytes.";
  const std::string next = std::string("\4\0\0\0", 4) + "next";
  for (size_t before = FRAME_HEAD_SIZE; before <= unwanted.size(); ++before) {
    FrameBuffer buffer;
    buffer.append(unwanted.substr(0, before));
    EXPECT_EQ(buffer.announcedSize(), 10u);
    buffer.skipFrame();
    EXPECT_EQ(buffer.isSkipping(), before < unwanted.size());
    EXPECT_EQ(buffer.empty(), before == unwanted.size());
    EXPECT_EQ(buffer.takeFrame(), std::nullopt);
    for (const char c : unwanted.substr(before) + next) buffer.append({&c, 1});
    EXPECT_FALSE(buffer.isSkipping());
    EXPECT_EQ(buffer.takeFrame(), "next");
    EXPECT_TRUE(buffer.empty());
  }
}

TEST(FrameBuffer, KnowsTheNextSizeAsSoonAsTheHeadIsThere) {
  FrameBuffer buffer;
  for (const char c : std::string("\5\0\0", 3)) buffer.append({&c, 1});
  EXPECT_EQ(buffer.announcedSize(), std::nullopt);
  buffer.append(std::string(1, '\0'));
  EXPECT_EQ(buffer.announcedSize(), 5u);
  buffer.reserveFrame();
  buffer.append("12345");
  EXPECT_EQ(buffer.takeFrame(), "12345");
  EXPECT_EQ(buffer.announcedSize(), std::nullopt);
}

}  // namespace
}  // namespace bridge
