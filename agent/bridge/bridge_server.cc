#include "agent/bridge/bridge_server.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

#include "agent/base/log.h"
#include "agent/base/start_failure.h"

namespace agent {
namespace {

using asio::local::stream_protocol;

constexpr mode_t DIRECTORY_MODE = 0750;
constexpr mode_t SOCKET_MODE = 0660;
constexpr size_t MAX_SESSIONS = 256;
constexpr std::chrono::milliseconds RETRY_PAUSE{100};

[[noreturn]] void fail(const std::string& path, const std::string& reason) {
  throw StartFailure(EXIT_UNAVAILABLE, "socket " + path + " " + reason);
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

/// The socket alone does not keep strangers out: they could put another one in its place.
void prepareDirectory(const std::string& path, std::optional<gid_t> group) {
  const std::string directory =
      std::filesystem::absolute(path).lexically_normal().parent_path().string();
  struct stat status {};
  if (::mkdir(directory.c_str(), 0700) == 0) {
    if (group) (void)::chown(directory.c_str(), static_cast<uid_t>(-1), *group);
    (void)::chmod(directory.c_str(), DIRECTORY_MODE);  // mkdir's mode is subject to the umask
  } else if (errno != EEXIST) {
    fail(path, "cannot be made: " + directory + ": " + std::generic_category().message(errno));
  }
  if (::stat(directory.c_str(), &status) != 0) {
    fail(path, "cannot be made: " + directory + ": " + std::generic_category().message(errno));
  }
  if ((status.st_mode & S_IRWXO) != 0 || (status.st_mode & S_IWGRP) != 0) {
    fail(path, "is not safe: others can enter or change its directory " + directory +
                   "; mode 0750 would be right");
  }
}

/// Of a session's thread, in bytes: the system's would fill a 32-bit address space with so many.
constexpr size_t STACK_SIZE = 1024 * 1024;

void limitStacks() {
  pthread_attr_t attributes;
  if (::pthread_attr_init(&attributes) != 0) return;
  (void)::pthread_attr_setstacksize(&attributes, STACK_SIZE);
  (void)::pthread_setattr_default_np(&attributes);
  (void)::pthread_attr_destroy(&attributes);
}

/// The library opens and accepts sockets without the flag.
template <typename Socket>
void closeOnExec(Socket& socket) {
  (void)::fcntl(socket.native_handle(), F_SETFD, FD_CLOEXEC);
}

std::vector<gid_t> groupsOf(int socket) {
  std::vector<gid_t> groups(32);
  for (;;) {
    auto size = static_cast<socklen_t>(groups.size() * sizeof(gid_t));
    const int result = ::getsockopt(socket, SOL_SOCKET, SO_PEERGROUPS, groups.data(), &size);
    groups.resize(size / sizeof(gid_t));
    if (result == 0) return groups;
    if (errno != ERANGE) return {};
  }
}

std::optional<BridgeSession> peerOf(stream_protocol::socket& socket) {
  ucred peer{};
  socklen_t size = sizeof peer;
  const int handle = socket.native_handle();
  if (::getsockopt(handle, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) return {};
  return BridgeSession(peer.uid, peer.gid, peer.pid, groupsOf(handle));
}

}  // namespace

BridgeServer::BridgeServer(asio::io_context& io, std::string path, std::optional<gid_t> group,
                           CommandService& service)
    : io_(io), service_(service), path_(std::move(path)), acceptor_(io), retry_(io) {
  const stream_protocol::endpoint endpoint = endpointAt(path_);
  prepareDirectory(path_, group);
  removeStale(io, endpoint);
  asio::error_code error;
  (void)acceptor_.open(endpoint.protocol(), error);
  if (!error) closeOnExec(acceptor_);
  if (!error) (void)acceptor_.bind(endpoint, error);
  if (!error && group && ::chown(path_.c_str(), static_cast<uid_t>(-1), *group) != 0) {
    log(Level::Warning,
        "the administrators' group cannot use the socket: it is not the agent's own",
        {{"socket", path_}, {"gid", *group}});
  }
  if (!error && ::chmod(path_.c_str(), SOCKET_MODE) != 0) {
    error.assign(errno, asio::error::get_system_category());
  }
  if (!error) (void)acceptor_.listen(asio::socket_base::max_listen_connections, error);
  if (error) fail(path_, "cannot be listened on: " + error.message());
  limitStacks();
  acceptNext();
}

BridgeServer::~BridgeServer() { (void)::unlink(path_.c_str()); }

void BridgeServer::acceptNext() {
  acceptor_.async_accept([this](const asio::error_code& error, stream_protocol::socket socket) {
    if (!acceptor_.is_open()) return;
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

void BridgeServer::open(stream_protocol::socket socket) {
  closeOnExec(socket);
  const auto peer = peerOf(socket);
  if (!peer) return;
  if (sessions_.size() >= MAX_SESSIONS) {
    log(Level::Warning, "a client was turned away: too many sessions",
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
  const auto session = std::make_shared<Session>(io_, handle, *peer, service_, leave);
  *place = session;
  sessionCount_ = sessions_.size();
  try {
    session->start();
  } catch (const std::system_error& error) {
    log(Level::Error, "a client was turned away: no thread for it", {{"reason", error.what()}});
    leave();
  }
}

void BridgeServer::stop() {
  asio::error_code ignored;
  (void)acceptor_.close(ignored);
  retry_.cancel();
  for (const auto& weak : std::list(sessions_)) {  // a copy: a session that ends leaves the list
    if (const auto session = weak.lock()) session->stop();
  }
}

}  // namespace agent
