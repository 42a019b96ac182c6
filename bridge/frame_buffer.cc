#include "bridge/frame_buffer.h"

#include <algorithm>
#include <utility>

#include "bridge/protocol.h"

namespace bridge {

void FrameBuffer::append(std::string_view bytes) {
  const size_t skipped = std::min(skipping_, bytes.size());
  skipping_ -= skipped;
  bytes_.append(bytes.substr(skipped));
}

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

void FrameBuffer::reserveFrame() { bytes_.reserve(FRAME_HEAD_SIZE + *announcedSize()); }

void FrameBuffer::skipFrame() {
  const size_t size = FRAME_HEAD_SIZE + *announcedSize();
  const size_t here = std::min(size, bytes_.size());
  bytes_.erase(0, here);
  skipping_ = size - here;
}

/// What follows is copied, not what is taken: that may be large, and mostly nothing follows.
std::string FrameBuffer::take(size_t size) {
  std::string rest = bytes_.substr(size);
  bytes_.resize(size);
  return std::exchange(bytes_, std::move(rest));
}

}  // namespace bridge
