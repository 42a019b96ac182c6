// The framing of a stream's bytes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace bridge {

/// Takes the bytes that one side has received, as they come, and gives them out as the hello and
/// the frames that they are. Not thread-safe.
class FrameBuffer {
 public:
  void append(std::string_view bytes);

  /// Whether no bytes are left: the other side has sent no part of a next hello or frame.
  bool empty() const { return bytes_.empty() && skipping_ == 0; }

  /// Takes HELLO_SIZE bytes off the front; nothing as long as there are fewer.
  std::optional<std::string> takeHello();

  /// Whether the next frame is there as a whole.
  bool holdsFrame() const;

  /// Takes the next frame off the front and returns it without its head; nothing as long as it is
  /// not there as a whole.
  std::optional<std::string> takeFrame();

  /// The size that the next frame's head announces, if that is over MAX_FRAME_SIZE. Such a frame is
  /// never given out, nor is anything behind it.
  std::optional<uint32_t> oversize() const;

  /// What the next frame's head announces; nothing as long as it is not there as a whole.
  std::optional<uint32_t> announcedSize() const;

  /// Makes room for the next frame at once. REQUIRES: its head is there.
  void reserveFrame();

  /// Drops the next frame, what has come of it and what will. REQUIRES: its head is there.
  void skipFrame();

  /// Whether a part of a frame that is dropped has not come yet.
  bool isSkipping() const { return skipping_ > 0; }

 private:
  std::string take(size_t size);

  std::string bytes_;
  size_t skipping_ = 0;  // bytes that are to come and to be dropped
};

}  // namespace bridge
