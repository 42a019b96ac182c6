// The bridge on a stream socket: what the agent and its clients say to each other.
// docs/bridge-protocol.md describes it for other implementations.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

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

/// Client to agent: a command for a module.
struct Command {
  int32_t module = 0;
  int32_t command = 0;
  std::string input;
};

/// Why a command failed. The numbers travel: do not change one.
enum class Reason : uint32_t {
  None = 0,            ///< it did not fail
  ModuleRefused = 1,   ///< the module answered 0
  NotAuthorised = 2,   ///< the session may not do that
  MalformedInput = 3,  ///< the module could not read the input to its end
  NoSuchModule = 4,    ///< no module with that identifier is loaded
  MalformedFrame = 5,  ///< the frame holds no command; the session is closed after this reply
  ModuleFailed = 6,    ///< the module ran into an error of its own
  ReplyTooLarge = 7,   ///< the command succeeded, but its output does not fit a frame
};

/// Agent to client: the answer to a command. `text` says why it failed, in words.
struct Reply {
  int32_t result = 0;  ///< the module's truth value
  Reason reason = Reason::None;
  std::string text;
  std::string output;
};

std::string encodeHello(uint32_t version = PROTOCOL_VERSION);

/// The version in a hello; false if the bytes are none. REQUIRES: HELLO_SIZE bytes.
bool decodeHello(std::string_view bytes, uint32_t& version);

/// Each encode returns a whole frame, with its head. REQUIRES: it fits MAX_FRAME_SIZE.
std::string encode(const Command& command);
std::string encode(const Reply& reply);

/// The size in a frame's head. REQUIRES: FRAME_HEAD_SIZE bytes.
uint32_t decodeFrameHead(std::string_view head);

/// Each decode takes the bytes behind a frame's head and returns false, with the target in an
/// unspecified state, if they are not one whole message.
bool decode(std::string_view frame, Command& command);
bool decode(std::string_view frame, Reply& reply);

}  // namespace bridge
