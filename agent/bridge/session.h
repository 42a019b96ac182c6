// One client on the bridge's socket.
#pragma once

#include <array>
#include <asio/local/stream_protocol.hpp>
#include <asio/steady_timer.hpp>
#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "agent/bridge/bridge_session.h"
#include "agent/bridge/command_service.h"

namespace agent {

/// Reads requests off a socket, executes them one at a time, and writes the replies and, for a
/// subscriber, the events, until the client goes, sends what is no request, stops in the middle of
/// something, or stop() is called.
///
/// All handlers run in the socket's strand, so never side by side; a command runs in one of them.
/// Keeps itself alive while it waits.
class Session : public std::enable_shared_from_this<Session> {
 public:
  using Socket = asio::local::stream_protocol::socket;

  /// REQUIRES: the socket's executor is a strand. `onEnd` is called once, in it.
  Session(Socket socket, BridgeSession peer, CommandService& service, std::function<void()> onEnd);

  /// Starts to serve the client.
  void start();

  /// Ends the session as soon as the running command, if any, has been answered. Thread-safe.
  void stop();

 private:
  using Clock = std::chrono::steady_clock;

  void readMore();
  void handleInput();
  bool handleHello();
  bool handleFrame();
  std::string answer(std::string_view frame);
  bridge::Reply subscribe();
  void deliver(const bridge::Event& event);
  void write(std::string bytes);
  void writeNext();
  void endAfterWriting();
  void watchClock();
  void end();

  Socket socket_;
  asio::steady_timer timer_;
  BridgeSession peer_;
  CommandService& service_;
  std::function<void()> onEnd_;
  std::optional<ChangeTracker::Ticket> subscription_;
  std::array<char, 4096> chunk_{};
  std::string input_;               // received and not yet handled
  std::deque<std::string> output_;  // to be written; the front is being written
  bool answering_ = false;          // a reply is in `output_`: no request is handled meanwhile
  Clock::time_point lastProgress_;  // of the hello, of a frame that has begun, or of the output
  bool greeted_ = false;
  bool stopping_ = false;  // ends when nothing is left to write
  bool ended_ = false;
};

}  // namespace agent
