// The connection to one client.
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
#include <thread>

#include "agent/base/bridge_session.h"
#include "agent/base/handler_memory.h"
#include "agent/base/quota.h"
#include "agent/bridge/command_service.h"
#include "agent/bridge/send_queue.h"
#include "bridge/frame_buffer.h"

namespace agent {

/// Reads requests from a socket, executes them one at a time, and sends the replies and, to a
/// subscriber or to who watches, the events. Ends when the client closes the socket, sends
/// something else than a request or runs into a time-out, or when stop() is called.
///
/// Each connection has a thread of its own for its requests, so that no client waits for another
/// one's command. Time-outs, waiting for a full socket and the clean-up at the end run on the
/// thread that runs the context. Keeps itself alive until its end.
class ClientConnection : public std::enable_shared_from_this<ClientConnection> {
 public:
  /// Takes the socket; an exception leaves it to the caller. What requests and replies take of
  /// `memory`, in bytes, is counted. `onEnd` is called once, on the context's thread. REQUIRES: the
  /// context, the service and the quota outlive the connection.
  ClientConnection(asio::io_context& io, int socket, BridgeSession peer, CommandService& service,
                   Quota& memory, std::function<void()> onEnd);
  ~ClientConnection();

  ClientConnection(const ClientConnection&) = delete;
  ClientConnection& operator=(const ClientConnection&) = delete;

  /// Starts to serve the client. Throws std::system_error or std::bad_alloc if there can be no
  /// thread for it; `onEnd` is not called then.
  void start();

  /// Ends the connection as soon as the running command, if any, has been answered.
  void stop();

 private:
  using Clock = SendQueue::Clock;

  // On the context's thread.
  void waitUntilWritable();
  void watchClock();
  bool isOverdue() const;
  void finish();

  // On the connection's own.
  void run();
  bool handleHello();
  void serve();
  bool awaitFrame();
  bool readMore();
  void makeRoom();
  bool handleFrame();
  bool refuseFrame(std::string reason);
  bool sendRefusal(bridge::Reply reply);
  bridge::Reply execute(const bridge::Request& request);
  bool subscribe();
  bool watch();
  bool send(bridge::Reply reply);
  void tellOfFailure() noexcept;
  bool settle(SendQueue::Outcome outcome);

  // On any.
  SendQueue::Outcome post(std::string frame, SendQueue::Kind kind = SendQueue::Kind::Reply);
  void postEvent(const std::function<std::string()>& frame) noexcept;

  asio::io_context& io_;
  const int socket_;
  asio::steady_timer timer_;
  asio::posix::stream_descriptor writable_;  // a duplicate of the socket, while it is full
  BridgeSession peer_;
  CommandService& service_;
  std::function<void()> onEnd_;
  // Of what the context is to do for this connection, one of each at a time: it can be asked for
  // without any other memory.
  HandlerMemory clockMemory_;
  HandlerMemory backlogMemory_;
  HandlerMemory endMemory_;
  SendQueue sendQueue_;
  std::thread thread_;
  bool ended_ = false;

  // Used by the connection's thread only, while there is one.
  std::optional<ChangeTracker::Ticket> subscription_;
  std::optional<Events::Ticket> watch_;
  std::optional<Events::Activity> activity_;  // while a command runs
  std::array<char, 4096> chunk_{};
  bridge::FrameBuffer input_;  // received and not yet handled
  QuotaShare frameBytes_;      // of the request that arrives or is executed
  QuotaShare replyBytes_;      // of the reply, until it is taken
  bool counted_ = false;       // the next frame
  bool refused_ = false;       // the next frame: there is no room for it

  enum class State {
    Waiting,   // for a hello or a request
    Running,   // a command, until its reply is written
    Stopping,  // no further request
  };
  std::atomic<State> state_ = State::Waiting;

  static constexpr Clock::rep NOTHING = 0;
  std::atomic<Clock::rep> waitingSince_;  // for the rest of a hello or frame; NOTHING if not
};

}  // namespace agent
