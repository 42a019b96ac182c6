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
  void append(std::string_view bytes) { bytes_.append(bytes); }

  /// Whether no bytes are left: the other side has sent no part of a next hello or frame.
  bool empty() const { return bytes_.empty(); }

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

 private:
  std::optional<uint32_t> announcedSize() const;
  std::string take(size_t size);

  std::string bytes_;
};

}  // namespace bridge
