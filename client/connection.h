// A client's connection to the agent's bridge.
#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "bridge/protocol.h"

namespace client {

/// Open from its construction to its destruction. Every operation throws Failure, with the path of
/// the socket in the message, if the agent cannot be reached, says what the protocol does not allow
/// or stays silent for longer than the timeout; the connection is of no more use then.
class Connection {
 public:
  /// Connects and exchanges the hellos.
  Connection(const std::string& socketPath, std::chrono::seconds timeout);
  ~Connection();

  /// Sends a command and waits for its reply. A command that is too long for a frame is not sent.
  bridge::Reply exchange(const bridge::Command& command);

 private:
  class Stream;
  const std::unique_ptr<Stream> stream_;
};

}  // namespace client
