#include "bridge/protocol.h"

#include <cstring>

#include "bridge/bytes.h"

namespace bridge {
namespace {

/// The first byte of a frame.
enum Kind : uint8_t {
  COMMAND = 1,
  STATUS = 2,
  SUBSCRIBE = 3,
  AGENT_COMMAND = 4,
  REPLY = 129,
  EVENT = 130,
  NOTICE = 131,
};

enum CommandFlags : uint8_t { HAS_REVISION = 1, FORCE = 2 };

void putBody(std::string& out, const Command& command) {
  const int flags = (command.revision ? HAS_REVISION : 0) | (command.force ? FORCE : 0);
  put(out, COMMAND);
  put(out, static_cast<uint8_t>(flags));
  put(out, command.module);
  put(out, command.command);
  put(out, command.revision.value_or(0));
  out += command.input;
}

void putBody(std::string& out, const StatusRequest& /*request*/) { put(out, STATUS); }

void putBody(std::string& out, const Subscription& /*request*/) { put(out, SUBSCRIBE); }

void putBody(std::string& out, const AgentCommand& command) {
  put(out, AGENT_COMMAND);
  put(out, command.name);
  out += command.input;
}

void putBody(std::string& out, const Reply& reply) {
  put(out, REPLY);
  put(out, reply.result);
  put(out, static_cast<uint32_t>(reply.reason));
  put(out, reply.revision);
  put(out, reply.text);
  out += reply.output;
}

void putBody(std::string& out, const Event& event) {
  put(out, EVENT);
  put(out, event.revision);
  put(out, event.uid);
  put(out, event.pid);
  out += event.group;
}

void putBody(std::string& out, const Notice& notice) {
  put(out, NOTICE);
  put(out, notice);
}

template <typename Variant>
std::string frame(const Variant& content) {
  std::string out(FRAME_HEAD_SIZE, '\0');
  std::visit([&](const auto& alternative) { putBody(out, alternative); }, content);
  const auto size = static_cast<uint32_t>(out.size() - FRAME_HEAD_SIZE);
  std::memcpy(out.data(), &size, sizeof size);
  return out;
}

bool takeBody(std::string_view bytes, Command& command) {
  uint8_t flags = 0;
  uint64_t revision = 0;
  if (!take(bytes, flags) || !take(bytes, command.module) || !take(bytes, command.command) ||
      !take(bytes, revision)) {
    return false;
  }
  if ((flags & HAS_REVISION) != 0) command.revision = revision;
  command.force = (flags & FORCE) != 0;
  command.input = bytes;
  return (flags & ~(HAS_REVISION | FORCE)) == 0;
}

bool takeBody(std::string_view bytes, StatusRequest& /*request*/) { return bytes.empty(); }

bool takeBody(std::string_view bytes, Subscription& /*request*/) { return bytes.empty(); }

bool takeBody(std::string_view bytes, AgentCommand& command) {
  if (!take(bytes, command.name)) return false;
  command.input = bytes;
  return true;
}

bool takeBody(std::string_view bytes, Reply& reply) {
  uint32_t reason = 0;
  if (!take(bytes, reply.result) || !take(bytes, reason) || !take(bytes, reply.revision) ||
      !take(bytes, reply.text)) {
    return false;
  }
  reply.reason = static_cast<Reason>(reason);
  reply.output = bytes;
  return true;
}

bool takeBody(std::string_view bytes, Event& event) {
  if (!take(bytes, event.revision) || !take(bytes, event.uid) || !take(bytes, event.pid)) {
    return false;
  }
  event.group = bytes;
  return true;
}

bool takeBody(std::string_view bytes, Notice& notice) { return take(bytes, notice); }

template <typename Variant, typename Alternative>
std::optional<Variant> decodeAs(std::string_view body) {
  Alternative content;
  if (!takeBody(body, content)) return std::nullopt;
  return content;
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

std::string encode(const Request& request) { return frame(request); }

std::string encode(const Message& message) { return frame(message); }

uint32_t decodeFrameHead(std::string_view head) {
  uint32_t size = 0;
  (void)take(head, size);
  return size;
}

std::optional<Request> decodeRequest(std::string_view frame) {
  uint8_t kind = 0;
  if (!take(frame, kind)) return std::nullopt;
  switch (kind) {
    case COMMAND:
      return decodeAs<Request, Command>(frame);
    case STATUS:
      return decodeAs<Request, StatusRequest>(frame);
    case SUBSCRIBE:
      return decodeAs<Request, Subscription>(frame);
    case AGENT_COMMAND:
      return decodeAs<Request, AgentCommand>(frame);
    default:
      return std::nullopt;
  }
}

std::optional<Message> decodeMessage(std::string_view frame) {
  uint8_t kind = 0;
  if (!take(frame, kind)) return std::nullopt;
  switch (kind) {
    case REPLY:
      return decodeAs<Message, Reply>(frame);
    case EVENT:
      return decodeAs<Message, Event>(frame);
    case NOTICE:
      return decodeAs<Message, Notice>(frame);
    default:
      return std::nullopt;
  }
}

}  // namespace bridge
