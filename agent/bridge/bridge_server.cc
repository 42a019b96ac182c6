#include "agent/bridge/bridge_server.h"

#include <pthread.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <exception>
#include <utility>

#include "agent/base/log.h"
#include "agent/bridge/inherited_socket.h"
#include "agent/bridge/limits.h"
#include "agent/bridge/peer_credentials.h"

namespace agent {
namespace {

using asio::local::stream_protocol;

constexpr std::chrono::milliseconds RETRY_PAUSE{100};

/// Of a connection's thread, in bytes. SESSION_LIMITS.all threads with the system's default would
/// fill a 32-bit address space.
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
      inherited_(inheritedDescriptor()),
      acceptor_(inherited_ ? listenOn(io, *inherited_, path_) : listenAt(io, path_)),
      identity_(identityOf(path_)),
      retry_(io),
      sessionQuota_(SESSION_LIMITS),
      memoryQuota_(MEMORY_LIMITS) {
  limitStacks();
  acceptAfter(std::chrono::milliseconds(0));  // the timer has its memory from now on
}

BridgeServer::Socket::~Socket() {
  if (handle_ >= 0) (void)::close(handle_);
}

BridgeServer::~BridgeServer() { close(); }

void BridgeServer::acceptNext() {
  const auto accept = [this](const asio::error_code& error) {
    if (!acceptor_.is_open()) return;
    const int socket =
        error ? -1 : ::accept4(acceptor_.native_handle(), nullptr, nullptr, SOCK_CLOEXEC);
    if (socket >= 0) {
      open(Socket(socket));
      return acceptNext();
    }
    const int reason = error ? error.value() : errno;
    if (reason == EAGAIN || reason == EINTR || reason == ECONNABORTED) return acceptNext();
    logOften(Level::Error, "a client could not be taken", {{"reason", ::strerrordesc_np(reason)}});
    acceptAfter(RETRY_PAUSE);
  };
  acceptor_.async_wait(stream_protocol::acceptor::wait_read, inMemory(acceptMemory_, accept));
}

void BridgeServer::acceptAfter(std::chrono::milliseconds pause) {
  retry_.expires_after(pause);
  retry_.async_wait(inMemory(retryMemory_, [this](const asio::error_code& cancelled) {
    if (!cancelled) acceptNext();
  }));
}

void BridgeServer::open(Socket socket) try {
  const auto peer = peerOf(socket.handle());
  if (!peer) return;
  const auto place = sessions_.emplace(sessions_.end(), sessionQuota_, peer->uid);
  try {
    begin(std::move(socket), *peer, place);
  } catch (...) {
    leave(place);
    throw;
  }
} catch (const std::exception& error) {
  logOften(Level::Error, "a client was turned away: no thread or memory for it",
           {{"reason", error.what()}});
}

void BridgeServer::begin(Socket socket, const BridgeSession& peer, Place place) {
  if (!place->counted.resize(1)) {
    logOften(Level::Warning, "a client was turned away: too many sessions",
             {{"sessions", static_cast<long long>(sessions())},
              {"uid", peer.uid},
              {"pid", peer.pid},
              {"program", peer.program}});
    return leave(place);
  }
  const auto session = std::make_shared<ClientConnection>(
      io_, socket.handle(), peer, service_, memoryQuota_, [this, place] { leave(place); });
  socket.release();
  place->session = session;
  sessionCount_ = sessions_.size();
  session->start();
}

void BridgeServer::leave(Place place) {
  sessions_.erase(place);
  sessionCount_ = sessions_.size();
}

void BridgeServer::close() {
  if (!acceptor_.is_open()) return;
  // Another agent may have put its own there. While this one is bound, no other can have its
  // number, nor takes it for one that was left behind.
  if (!inherited_ && identityOf(path_) == identity_) (void)::unlink(path_.c_str());
  asio::error_code ignored;
  (void)acceptor_.close(ignored);
}

void BridgeServer::stop() {
  close();
  retry_.cancel();
  for (const Entry& entry : sessions_) {
    if (const auto session = entry.session.lock()) session->stop();
  }
  service_.events().publishEnd();
}

}  // namespace agent
