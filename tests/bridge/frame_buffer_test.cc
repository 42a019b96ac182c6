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

}  // namespace
}  // namespace bridge
