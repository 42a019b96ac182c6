#include "agent/bridge/bridge_server.h"

#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

#include <system_error>
#include <utility>

#include "agent/base/log.h"
#include "agent/bridge/peer_credentials.h"

namespace agent {
namespace {

using asio::local::stream_protocol;

constexpr size_t MAX_SESSIONS = 256;
constexpr std::chrono::milliseconds RETRY_PAUSE{100};

/// Of a connection's thread, in bytes. MAX_SESSIONS threads with the system's default would fill a
/// 32-bit address space.
constexpr size_t STACK_SIZE = 1024 * 1024;

void limitStacks() {
  pthread_attr_t attributes;
  if (::pthread_attr_init(&attributes) != 0) return;
  (void)::pthread_attr_setstacksize(&attributes, STACK_SIZE);
  (void)::pthread_setattr_default_np(&attributes);
  (void)::pthread_attr_destroy(&attributes);
}

}  // namespace

BridgeServer::BridgeServer(asio::io_context& io, std::string path, CommandService& service)
    : io_(io),
      service_(service),
      path_(std::move(path)),
      acceptor_(listenAt(io, path_)),
      identity_(identityOf(path_)),
      retry_(io) {
  limitStacks();
  acceptNext();
}

BridgeServer::~BridgeServer() { close(); }

void BridgeServer::acceptNext() {
  acceptor_.async_accept([this](const asio::error_code& error, stream_protocol::socket socket) {
    if (!acceptor_.is_open()) return;
    if (!error) {
      open(std::move(socket));
      return acceptNext();
    }
    logOften(Level::Error, "a client could not be taken", {{"reason", error.message()}});
    retry_.expires_after(RETRY_PAUSE);
    retry_.async_wait([this](const asio::error_code& cancelled) {
      if (!cancelled) acceptNext();
    });
  });
}

void BridgeServer::open(stream_protocol::socket socket) {
  // The library accepts sockets without the flag.
  (void)::fcntl(socket.native_handle(), F_SETFD, FD_CLOEXEC);
  const auto peer = peerOf(socket.native_handle());
  if (!peer) return;
  if (sessions_.size() >= MAX_SESSIONS) {
    logOften(Level::Warning, "a client was turned away: too many sessions",
             {{"sessions", static_cast<long long>(sessions_.size())}, {"uid", peer->uid}});
    return;
  }
  asio::error_code failed;
  const int handle = socket.release(failed);
  if (failed) return;
  const auto place = sessions_.emplace(sessions_.end());
  const auto leave = [this, place] {
    sessions_.erase(place);
    sessionCount_ = sessions_.size();
  };
  const auto session = std::make_shared<ClientConnection>(io_, handle, *peer, service_, leave);
  *place = session;
  sessionCount_ = sessions_.size();
  try {
    session->start();
  } catch (const std::system_error& error) {
    logOften(Level::Error, "a client was turned away: no thread for it",
             {{"reason", error.what()}});
    leave();
  }
}

void BridgeServer::close() {
  if (!acceptor_.is_open()) return;
  // Another agent may have put its own there. While this one is bound, no other can have its
  // number, nor takes it for one that was left behind.
  if (identityOf(path_) == identity_) (void)::unlink(path_.c_str());
  asio::error_code ignored;
  (void)acceptor_.close(ignored);
}

void BridgeServer::stop() {
  close();
  retry_.cancel();
  for (const auto& weak : std::list(sessions_)) {  // a copy: a session that ends leaves the list
    if (const auto session = weak.lock()) session->stop();
  }
}

}  // namespace agent
