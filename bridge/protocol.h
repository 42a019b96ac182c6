// The bridge on a stream socket: what the agent and its clients say to each other.
// docs/bridge-protocol.md describes it for other implementations.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "bridge/notice.h"
#include "bridge/reason.h"

namespace bridge {

/// Both sides open with a hello: the four bytes HELLO_MAGIC and the version, 32-bit little-endian.
inline constexpr std::string_view HELLO_MAGIC = "LPBR";
inline constexpr uint32_t PROTOCOL_VERSION = 1;
inline constexpr size_t HELLO_SIZE = 8;

/// After the hellos everything is a frame: a 32-bit little-endian size, then that many bytes.
inline constexpr size_t FRAME_HEAD_SIZE = 4;

/// Upper limit of a frame's size, in bytes, without its head.
inline constexpr uint32_t MAX_FRAME_SIZE = 16 * 1024 * 1024;

/// Upper limit of a reply's output, in bytes: what a frame can hold besides the other fields.
inline constexpr size_t MAX_REPLY_OUTPUT = MAX_FRAME_SIZE - 64 * 1024;

/// Client to agent: a command for a module. Answered by a Reply.
struct Command {
  int32_t module = 0;
  int32_t command = 0;
  std::string input = {};
  /// What the group's revision was when the values to be written were read: the command is refused
  /// as a conflict if it is another one by now. Without it the values are written all the same.
  std::optional<uint64_t> revision = {};
  /// Confirms a save that the agent would refuse otherwise.
  bool force = false;

  bool operator==(const Command&) const = default;
};

/// Client to agent: asks for the state of the agent. Answered by a Reply whose output is a JSON
/// object.
struct StatusRequest {
  bool operator==(const StatusRequest&) const = default;
};

/// Client to agent: asks for an Event at each change of a group from now on. Answered by a Reply.
struct Subscription {
  bool operator==(const Subscription&) const = default;
};

/// Client to agent: a command for the agent itself, which knows it by its name. Answered by a
/// Reply.
struct AgentCommand {
  std::string name = {};
  std::string input = {};

  bool operator==(const AgentCommand&) const = default;
};

/// The agent's command that asks for a Notice of all that happens from now on. After its reply the
/// first one is of the degradation, if the agent is degraded.
inline constexpr std::string_view WATCH = "watch";

using Request = std::variant<Command, StatusRequest, Subscription, AgentCommand>;

/// Agent to client: the answer to a request; one each, in the order of the requests.
struct Reply {
  int32_t result = 0;  ///< the module's truth value
  Reason reason = Reason::None;
  std::string text = {};    ///< why the request failed, in words
  std::string output = {};  ///< of the command
  /// Of the group that was read or written: grows with each write. 0 where there is none.
  uint64_t revision = 0;

  bool operator==(const Reply&) const = default;
};

/// The reply to a request that was not carried out.
inline Reply failure(Reason reason, std::string text) { return {0, reason, std::move(text)}; }

/// Agent to client: somebody has written a group.
struct Event {
  std::string group = {};
  uint64_t revision = 0;
  uint32_t uid = 0;  ///< of the process that wrote
  int32_t pid = 0;

  bool operator==(const Event&) const = default;
};

using Message = std::variant<Reply, Event, Notice>;

std::string encodeHello(uint32_t version = PROTOCOL_VERSION);

/// The version in a hello; false if the bytes are none. REQUIRES: HELLO_SIZE bytes.
bool decodeHello(std::string_view bytes, uint32_t& version);

/// Each returns a whole frame, with its head. REQUIRES: it fits MAX_FRAME_SIZE.
std::string encode(const Request& request);
std::string encode(const Message& message);

/// The size in a frame's head. REQUIRES: FRAME_HEAD_SIZE bytes.
uint32_t decodeFrameHead(std::string_view head);

/// Each takes the bytes behind a frame's head and returns nothing if they are not one whole request
/// or message.
std::optional<Request> decodeRequest(std::string_view frame);
std::optional<Message> decodeMessage(std::string_view frame);

}  // namespace bridge
