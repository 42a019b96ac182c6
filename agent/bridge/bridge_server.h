// The bridge's socket.
#pragma once

#include <asio/io_context.hpp>
#include <asio/local/stream_protocol.hpp>
#include <asio/steady_timer.hpp>
#include <atomic>
#include <chrono>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "agent/base/bridge_session.h"
#include "agent/base/handler_memory.h"
#include "agent/base/quota.h"
#include "agent/bridge/client_connection.h"
#include "agent/bridge/command_service.h"
#include "agent/bridge/socket_path.h"

namespace agent {

/// Listens on a Unix stream socket and serves each client that connects. Runs on the one thread
/// that runs the context, and is used on no other but where it says so.
class BridgeServer {
 public:
  /// Starts to listen, on the socket that the service manager has passed or as listenAt() does.
  /// Threads of the process have small stacks from then on. Throws StartFailure. REQUIRES: the
  /// context and the service outlive the server.
  BridgeServer(asio::io_context& io, std::string path, CommandService& service);

  /// As stop(), where that was not called. REQUIRES: the context has run out of work.
  ~BridgeServer();

  BridgeServer(const BridgeServer&) = delete;
  BridgeServer& operator=(const BridgeServer&) = delete;

  /// Removes the socket if it has made it and the path still leads to it, takes no more clients,
  /// and ends every session when its running command has been answered; the context then runs out
  /// of work.
  void stop();

  /// How many there are. Thread-safe.
  size_t sessions() const { return sessionCount_; }

 private:
  struct Entry {
    Entry(Quota& sessions, uid_t user) : counted(sessions, user) {}

    std::weak_ptr<ClientConnection> session;
    QuotaShare counted;
  };
  using Place = std::list<Entry>::iterator;

  /// A descriptor that is closed unless it is given on.
  class Socket {
   public:
    explicit Socket(int handle) : handle_(handle) {}
    Socket(Socket&& other) noexcept : handle_(std::exchange(other.handle_, -1)) {}
    ~Socket();

    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;
    Socket& operator=(Socket&&) = delete;

    int handle() const { return handle_; }
    void release() { handle_ = -1; }

   private:
    int handle_;
  };

  void acceptNext();
  void close();
  void acceptAfter(std::chrono::milliseconds pause);
  void open(Socket socket);
  void begin(Socket socket, const BridgeSession& peer, Place place);
  void leave(Place place);

  asio::io_context& io_;
  CommandService& service_;
  const std::string path_;
  const std::optional<int> inherited_;  // the descriptor; the acceptor owns it
  asio::local::stream_protocol::acceptor acceptor_;
  const FileIdentity identity_;  // of the socket
  asio::steady_timer retry_;     // before the next client, and while none can be taken
  HandlerMemory acceptMemory_;
  HandlerMemory retryMemory_;
  Quota sessionQuota_;
  Quota memoryQuota_;
  std::list<Entry> sessions_;
  std::atomic<size_t> sessionCount_ = 0;
};

}  // namespace agent
