#include "bridge/protocol.h"

#include <bit>
#include <concepts>
#include <cstring>

namespace bridge {
namespace {

static_assert(std::endian::native == std::endian::little, "values are copied in host byte order");

template <std::integral T>
void put(std::string& out, T value) {
  char bytes[sizeof value];
  std::memcpy(bytes, &value, sizeof value);
  out.append(bytes, sizeof value);
}

/// Takes a value off the front of the bytes; false if they are too short.
template <std::integral T>
bool take(std::string_view& bytes, T& value) {
  if (bytes.size() < sizeof value) return false;
  std::memcpy(&value, bytes.data(), sizeof value);
  bytes.remove_prefix(sizeof value);
  return true;
}

bool take(std::string_view& bytes, std::string& value) {
  uint32_t length = 0;
  if (!take(bytes, length) || bytes.size() < length) return false;
  value = bytes.substr(0, length);
  bytes.remove_prefix(length);
  return true;
}

std::string frame(const std::string& message) {
  std::string out;
  out.reserve(FRAME_HEAD_SIZE + message.size());
  put(out, static_cast<uint32_t>(message.size()));
  return out + message;
}

}  // namespace

std::string encodeHello(uint32_t version) {
  std::string out(HELLO_MAGIC);
  put(out, version);
  return out;
}

bool decodeHello(std::string_view bytes, uint32_t& version) {
  if (!bytes.starts_with(HELLO_MAGIC)) return false;
  bytes.remove_prefix(HELLO_MAGIC.size());
  return take(bytes, version);
}

std::string encode(const Command& command) {
  std::string message;
  put(message, command.module);
  put(message, command.command);
  message += command.input;
  return frame(message);
}

std::string encode(const Reply& reply) {
  std::string message;
  put(message, reply.result);
  put(message, static_cast<uint32_t>(reply.reason));
  put(message, static_cast<uint32_t>(reply.text.size()));
  message += reply.text;
  message += reply.output;
  return frame(message);
}

uint32_t decodeFrameHead(std::string_view head) {
  uint32_t size = 0;
  (void)take(head, size);
  return size;
}

bool decode(std::string_view frame, Command& command) {
  if (!take(frame, command.module) || !take(frame, command.command)) return false;
  command.input = frame;
  return true;
}

bool decode(std::string_view frame, Reply& reply) {
  uint32_t reason = 0;
  if (!take(frame, reply.result) || !take(frame, reason) || !take(frame, reply.text)) return false;
  reply.reason = static_cast<Reason>(reason);
  reply.output = frame;
  return true;
}

}  // namespace bridge
