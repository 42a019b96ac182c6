// A client that may send anything.
#pragma once

#include <optional>
#include <string>

#include "bridge/protocol.h"

namespace agent_testing {

/// Connected from its construction on. Throws std::system_error if it cannot connect.
class RawClient {
 public:
  explicit RawClient(const std::string& socketPath);
  ~RawClient() { close(); }

  RawClient(const RawClient&) = delete;
  RawClient& operator=(const RawClient&) = delete;

  /// As many of the bytes as the agent takes before it closes.
  void send(const std::string& bytes) const;

  /// Returns when the agent has read all that was sent.
  void waitUntilTaken() const;

  /// So many bytes, or fewer if the agent closes first.
  std::string read(size_t size) const;
  std::string readToEnd() const;

  /// Whether the agent has closed, and sent nothing that is not read. Does not wait.
  bool isClosed() const;

  /// Sends a hello and takes the agent's. Returns whether it came.
  bool greet() const;

  /// The next message; nothing if the agent closes first.
  std::optional<bridge::Message> receive() const;

  /// Sends a request and returns its reply. REQUIRES: one comes, and no event before it.
  bridge::Reply exchange(const bridge::Request& request) const;

  void close();

 private:
  int socket_;
};

}  // namespace agent_testing
