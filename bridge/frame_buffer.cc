#include "bridge/frame_buffer.h"

#include <utility>

#include "bridge/protocol.h"

namespace bridge {

std::optional<std::string> FrameBuffer::takeHello() {
  if (bytes_.size() < HELLO_SIZE) return std::nullopt;
  return take(HELLO_SIZE);
}

bool FrameBuffer::holdsFrame() const {
  const auto size = announcedSize();
  return size && *size <= MAX_FRAME_SIZE && bytes_.size() - FRAME_HEAD_SIZE >= *size;
}

std::optional<std::string> FrameBuffer::takeFrame() {
  if (!holdsFrame()) return std::nullopt;
  std::string frame = take(FRAME_HEAD_SIZE + *announcedSize());
  frame.erase(0, FRAME_HEAD_SIZE);
  return frame;
}

std::optional<uint32_t> FrameBuffer::oversize() const {
  const auto size = announcedSize();
  return size && *size > MAX_FRAME_SIZE ? size : std::nullopt;
}

std::optional<uint32_t> FrameBuffer::announcedSize() const {
  if (bytes_.size() < FRAME_HEAD_SIZE) return std::nullopt;
  return decodeFrameHead(bytes_);
}

/// What follows is copied, not what is taken: that may be large, and mostly nothing follows.
std::string FrameBuffer::take(size_t size) {
  std::string rest = bytes_.substr(size);
  bytes_.resize(size);
  return std::exchange(bytes_, std::move(rest));
}

}  // namespace bridge
