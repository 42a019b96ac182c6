// The bridge's socket.
#pragma once

#include <asio/io_context.hpp>
#include <asio/local/stream_protocol.hpp>
#include <asio/steady_timer.hpp>
#include <atomic>
#include <list>
#include <memory>
#include <string>

#include "agent/bridge/client_connection.h"
#include "agent/bridge/command_service.h"
#include "agent/bridge/socket_path.h"

namespace agent {

/// Listens on a Unix stream socket and serves each client that connects. Runs on the one thread
/// that runs the context, and is used on no other but where it says so.
class BridgeServer {
 public:
  /// Starts to listen, as listenAt() does. Threads of the process have small stacks from then on.
  /// Throws StartFailure. REQUIRES: the context and the service outlive the server.
  BridgeServer(asio::io_context& io, std::string path, CommandService& service);

  /// As stop(), where that was not called. REQUIRES: the context has run out of work.
  ~BridgeServer();

  BridgeServer(const BridgeServer&) = delete;
  BridgeServer& operator=(const BridgeServer&) = delete;

  /// Removes the socket if the path still leads to this one, takes no more clients, and ends every
  /// session when its running command has been answered; the context then runs out of work.
  void stop();

  /// How many there are. Thread-safe.
  size_t sessions() const { return sessionCount_; }

 private:
  void acceptNext();
  void close();
  void open(asio::local::stream_protocol::socket socket);

  asio::io_context& io_;
  CommandService& service_;
  const std::string path_;
  asio::local::stream_protocol::acceptor acceptor_;
  const FileIdentity identity_;  // of the socket
  asio::steady_timer retry_;     // while no client can be taken, e.g. for want of descriptors
  std::list<std::weak_ptr<ClientConnection>> sessions_;
  std::atomic<size_t> sessionCount_ = 0;
};

}  // namespace agent
