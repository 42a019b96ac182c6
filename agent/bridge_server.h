// The bridge's socket.
#pragma once

#include <asio/io_context.hpp>
#include <asio/local/stream_protocol.hpp>
#include <asio/strand.hpp>
#include <list>
#include <memory>
#include <mutex>
#include <string>

#include "agent/session.h"

namespace agent {

/// Listens on a Unix stream socket and serves each client that connects, on whichever threads run
/// the context.
class BridgeServer {
 public:
  /// Starts to listen. A socket that nobody listens on any more is replaced. Throws
  /// std::runtime_error, in words, if the path cannot be listened on.
  BridgeServer(asio::io_context& io, std::string path);

  /// Removes the socket. REQUIRES: no thread runs the context any more.
  ~BridgeServer();

  BridgeServer(const BridgeServer&) = delete;
  BridgeServer& operator=(const BridgeServer&) = delete;

  /// Takes no more clients and ends every session when its running command has been answered; the
  /// context then runs out of work. Thread-safe.
  void stop();

 private:
  void acceptNext();
  void open(Session::Socket socket);

  asio::io_context& io_;
  const std::string path_;
  asio::strand<asio::io_context::executor_type> strand_;  // of the acceptor
  asio::local::stream_protocol::acceptor acceptor_;
  asio::steady_timer retry_;  // while no client can be taken, e.g. for want of descriptors

  std::mutex mutex_;  // protects everything below
  std::list<std::weak_ptr<Session>> sessions_;
  bool stopped_ = false;
};

}  // namespace agent
