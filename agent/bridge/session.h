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
/// Everything runs on the one thread that runs the socket's context, but for commands that may take
/// long: those run on the service's workers. Keeps itself alive while it waits.
class Session : public std::enable_shared_from_this<Session> {
 public:
  using Socket = asio::local::stream_protocol::socket;

  /// `onEnd` is called once. REQUIRES: the service outlives the session.
  Session(Socket socket, BridgeSession peer, CommandService& service, std::function<void()> onEnd);

  /// Starts to serve the client.
  void start();

  /// Ends the session as soon as the running command, if any, has been answered.
  void stop();

 private:
  using Clock = std::chrono::steady_clock;

  bool busy() const { return running_ || !output_.empty(); }

  void readMore();
  void handleInput();
  bool handleHello();
  bool handleFrame();
  void handleRequest(bridge::Request request);
  void runOnWorker(bridge::Command command);
  bridge::Reply subscribe();
  void send(bridge::Reply reply);
  void send(std::string frame);
  void flush();
  void endIfStopped();
  void watchClock();
  void end();
  void leave();

  Socket socket_;
  asio::steady_timer timer_;
  BridgeSession peer_;  // a worker's while `running_`
  CommandService& service_;
  std::function<void()> onEnd_;
  std::optional<ChangeTracker::Ticket> subscription_;
  std::array<char, 4096> chunk_{};
  std::string input_;               // received and not yet handled
  std::deque<std::string> output_;  // frames to be written
  size_t written_ = 0;              // bytes of the first of them
  Clock::time_point lastProgress_;  // since when the client owes the rest of something
  bool begun_ = false;  // the hello or frame at the front of `input_` has been waited for
  bool reading_ = false;
  bool waitingToWrite_ = false;
  bool running_ = false;  // a command is on a worker
  bool greeted_ = false;
  bool stopping_ =
      false;  // no further request; ends when nothing runs and nothing is left to write
  bool ended_ = false;
};

}  // namespace agent
