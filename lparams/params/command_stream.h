// The byte streams of a bridge command and of its reply, and their primitives.
//
// All integers are little-endian, nothing is aligned, and there are no names, tags or types: both
// sides know the sequence of values.
#pragma once

#include <bit>
#include <concepts>
#include <cstdint>
#include <cstring>
#include <string>

namespace LPARAMS::Server {

static_assert(std::endian::native == std::endian::little, "values are copied in host byte order");

/// What a read past the end of a command throws: this literal, as a `const char*`.
inline constexpr const char* COMMAND_STREAM_ERROR = "CommandStreamError";

/// The input of a bridge command. The bytes stay the caller's. Not thread-safe.
struct CommandStreamIn {
  explicit CommandStreamIn(const std::string& bytes)
      : size(static_cast<uint32_t>(bytes.size())), data(bytes.data()) {}

  uint32_t size;     ///< bytes in the stream
  uint32_t pos = 0;  ///< offset of the next unread byte
  const char* data;  ///< first byte; not owned
};

/// The reply of a bridge command. Every write appends to the caller's string. Not thread-safe.
struct CommandStreamOut {
  std::string& out;
};

/// Moves the stream on by `width` bytes and returns the first of them. Throws COMMAND_STREAM_ERROR
/// if fewer are left; the position has moved all the same, modulo 2^32.
inline const char* takeBytes(CommandStreamIn& in, uint32_t width) {
  const uint32_t start = in.pos;
  in.pos += width;
  if (in.pos < start || in.pos > in.size) throw COMMAND_STREAM_ERROR;
  return in.data + start;
}

// Each take() stores the next value of the stream into its second argument, or throws
// COMMAND_STREAM_ERROR and leaves the argument as it was. Each put() appends one value.

template <std::integral T>
void take(CommandStreamIn& in, T& value) {
  std::memcpy(&value, takeBytes(in, sizeof value), sizeof value);
}

template <std::integral T>
void put(CommandStreamOut& out, T value) {
  char bytes[sizeof value];
  std::memcpy(bytes, &value, sizeof value);
  out.out.append(bytes, sizeof value);
}

/// One byte; only 1 is true, every other byte reads as false.
inline void take(CommandStreamIn& in, bool& value) { value = *takeBytes(in, 1) == 1; }

inline void put(CommandStreamOut& out, bool value) { out.out.push_back(value ? '\1' : '\0'); }

/// A 4-byte length, then as many bytes, zero bytes included.
inline void take(CommandStreamIn& in, std::string& value) {
  uint32_t length = 0;
  take(in, length);
  value.assign(takeBytes(in, length), length);
}

inline void put(CommandStreamOut& out, const std::string& value) {
  const auto length = static_cast<uint32_t>(value.size());
  put(out, length);
  out.out.append(value, 0, length);
}

}  // namespace LPARAMS::Server
