#include "agent/bridge_server.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <asio/post.hpp>
#include <optional>
#include <stdexcept>
#include <utility>

#include "agent/log.h"

namespace agent {
namespace {

using asio::local::stream_protocol;

constexpr mode_t SOCKET_MODE = 0660;
constexpr size_t MAX_SESSIONS = 256;
constexpr std::chrono::milliseconds RETRY_PAUSE{100};

[[noreturn]] void fail(const std::string& path, const std::string& reason) {
  throw std::runtime_error("socket " + path + " " + reason);
}

stream_protocol::endpoint endpointAt(const std::string& path) {
  constexpr size_t LIMIT = sizeof(sockaddr_un::sun_path) - 1;
  if (path.empty() || path.size() > LIMIT) {
    fail(path, "cannot be used: a socket's path has 1 to " + std::to_string(LIMIT) + " bytes");
  }
  return {path};
}

/// An agent that was killed leaves its socket behind.
void removeStale(asio::io_context& io, const stream_protocol::endpoint& endpoint) {
  struct stat status {};
  if (::lstat(endpoint.path().c_str(), &status) != 0) return;
  if (!S_ISSOCK(status.st_mode)) fail(endpoint.path(), "is in the way: it is not a socket");
  asio::error_code error;
  stream_protocol::socket(io).connect(endpoint, error);
  if (!error) fail(endpoint.path(), "is in use by another agent");
  if (error != asio::error::connection_refused) {
    fail(endpoint.path(),
         "is in the way, and whether an agent uses it cannot be found out: " + error.message());
  }
  (void)::unlink(endpoint.path().c_str());
}

std::optional<BridgeSession> peerOf(Session::Socket& socket) {
  ucred peer{};
  socklen_t size = sizeof peer;
  if (::getsockopt(socket.native_handle(), SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) return {};
  return BridgeSession(peer.uid, peer.gid, peer.pid);
}

}  // namespace

BridgeServer::BridgeServer(asio::io_context& io, std::string path)
    : io_(io),
      path_(std::move(path)),
      strand_(asio::make_strand(io)),
      acceptor_(strand_),
      retry_(strand_) {
  const stream_protocol::endpoint endpoint = endpointAt(path_);
  removeStale(io, endpoint);
  asio::error_code error;
  (void)acceptor_.open(endpoint.protocol(), error);
  if (!error) (void)acceptor_.bind(endpoint, error);
  if (!error && ::chmod(path_.c_str(), SOCKET_MODE) != 0) {
    error.assign(errno, asio::error::get_system_category());
  }
  if (!error) (void)acceptor_.listen(asio::socket_base::max_listen_connections, error);
  if (error) fail(path_, "cannot be listened on: " + error.message());
  asio::post(strand_, [this] { acceptNext(); });
}

BridgeServer::~BridgeServer() { (void)::unlink(path_.c_str()); }

void BridgeServer::acceptNext() {
  if (!acceptor_.is_open()) return;
  acceptor_.async_accept(
      asio::make_strand(io_), [this](const asio::error_code& error, Session::Socket socket) {
        if (error == asio::error::operation_aborted) return;
        if (!error) {
          open(std::move(socket));
          return acceptNext();
        }
        log(Level::Error, "a client could not be taken", {{"reason", error.message()}});
        retry_.expires_after(RETRY_PAUSE);
        retry_.async_wait([this](const asio::error_code& cancelled) {
          if (!cancelled) acceptNext();
        });
      });
}

void BridgeServer::open(Session::Socket socket) {
  const auto peer = peerOf(socket);
  if (!peer) return;
  const std::lock_guard lock(mutex_);
  if (stopped_) return;
  if (sessions_.size() >= MAX_SESSIONS) {
    log(Level::Warning, "a client was turned away: too many sessions",
        {{"sessions", static_cast<long long>(sessions_.size())}, {"uid", peer->uid}});
    return;
  }
  const auto place = sessions_.emplace(sessions_.end());
  auto session = std::make_shared<Session>(std::move(socket), *peer, [this, place] {
    const std::lock_guard endLock(mutex_);
    sessions_.erase(place);
  });
  *place = session;
  session->start();
}

void BridgeServer::stop() {
  asio::post(strand_, [this] {
    asio::error_code ignored;
    (void)acceptor_.close(ignored);
    retry_.cancel();
  });
  const std::lock_guard lock(mutex_);
  stopped_ = true;
  for (const auto& weak : sessions_) {
    if (const auto session = weak.lock()) session->stop();
  }
}

}  // namespace agent
