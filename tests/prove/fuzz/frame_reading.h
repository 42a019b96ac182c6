// The frames of the bridge, read a second time: written from docs/bridge-protocol.md, with nothing
// of the products' own decoder.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace fuzz {

/// What an agent has to make of one request.
struct Request {
  enum Kind { Command, Status, Subscription, AgentCommand, Malformed };
  Kind kind = Malformed;
  uint8_t flags = 0;  ///< of a command, as are the next three
  int32_t module = 0;
  int32_t command = 0;
  uint64_t revision = 0;
  std::string_view name = {};  ///< of a command of the agent
  std::string_view input = {};
};

/// The requests in what a client sends behind its hello, up to the first that is malformed.
std::vector<Request> readRequests(std::string_view bytes);

/// What an agent has sent behind its hello; nothing if that are no whole messages as the document
/// has them.
struct Reply {
  int32_t result = 0;
  uint32_t reason = 0;
  std::string_view text = {};
  std::string_view output = {};
};
std::optional<std::vector<Reply>> readReplies(std::string_view bytes);

}  // namespace fuzz
