// A client's connection to the agent's bridge.
#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "bridge/frame_buffer.h"
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

  /// Sends a request and waits for its reply. A request that is too long for a frame is not sent.
  /// REQUIRES: it does not watch.
  bridge::Reply exchange(const bridge::Request& request);

  /// Waits until a notice comes, as long as it takes. False if nobody reads any more what is
  /// written to `output`, a descriptor. REQUIRES: the last request was to watch.
  bool waitForNotice(int output);

  /// The next notice. REQUIRES: as above.
  bridge::Notice nextNotice();

 private:
  class Stream;

  bridge::Message receive();

  const std::unique_ptr<Stream> stream_;
  bridge::FrameBuffer received_;
};

}  // namespace client
