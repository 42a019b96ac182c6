// One client on the bridge's socket.
#pragma once

#include <array>
#include <asio/io_context.hpp>
#include <asio/posix/stream_descriptor.hpp>
#include <asio/steady_timer.hpp>
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

#include "agent/base/bridge_session.h"
#include "agent/bridge/command_service.h"
#include "agent/bridge/outbox.h"

namespace agent {

/// Reads requests off a socket, executes them one at a time, and writes the replies and, for a
/// subscriber, the events, until the client goes, sends what is no request, stops in the middle of
/// something, or stop() is called.
///
/// A session has a thread of its own, which waits for the client, and for what the client's
/// commands wait for: no session is held up by another. Its clock and its end are the matter of the
/// thread that runs the context. Keeps itself alive until its end.
class Session : public std::enable_shared_from_this<Session> {
 public:
  /// Takes the socket. `onEnd` is called once, on the context's thread. REQUIRES: the context and
  /// the service outlive the session.
  Session(asio::io_context& io, int socket, BridgeSession peer, CommandService& service,
          std::function<void()> onEnd);
  ~Session();

  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  /// Starts to serve the client. Throws std::system_error if there can be no thread for it; `onEnd`
  /// is not called then.
  void start();

  /// Ends the session as soon as the running command, if any, has been answered.
  void stop();

 private:
  using Clock = Outbox::Clock;

  // On the context's thread.
  void waitUntilWritable();
  void watchClock();
  bool isOverdue() const;
  void finish();

  // On the session's own.
  void run();
  bool handleHello();
  void serve();
  bool awaitFrame();
  bool readMore();
  bool handleFrame();
  bool handleRequest(const bridge::Request& request);
  bool subscribe();
  bool send(const bridge::Reply& reply);
  bool settle(Outbox::Outcome outcome);

  // On any.
  Outbox::Outcome post(std::string_view frame);
  void interrupt();

  asio::io_context& io_;
  const int socket_;
  asio::steady_timer timer_;
  asio::posix::stream_descriptor writable_;  // the socket's twin, while it is full
  BridgeSession peer_;
  CommandService& service_;
  std::function<void()> onEnd_;
  Outbox outbox_;
  std::thread thread_;
  bool ended_ = false;

  // Of the session's thread while there is one.
  std::optional<ChangeTracker::Ticket> subscription_;
  std::array<char, 4096> chunk_{};
  std::string input_;  // received and not yet handled

  enum class State {
    Waiting,   // for a hello or a request
    Running,   // a command, until its reply is written
    Stopping,  // no further request
  };
  std::atomic<State> state_ = State::Waiting;

  static constexpr Clock::rep NOTHING = 0;
  std::atomic<Clock::rep> owedSince_;  // when the client began a hello or a frame; NOTHING if not
};

}  // namespace agent
