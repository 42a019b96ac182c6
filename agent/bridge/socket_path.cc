#include "agent/bridge/socket_path.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "agent/base/own_user.h"
#include "agent/base/start_failure.h"

namespace agent {
namespace {

namespace fs = std::filesystem;
using asio::local::stream_protocol;

constexpr mode_t DIRECTORY_MODE = 0750;
constexpr mode_t SOCKET_MODE = 0660;

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

bool isTrusted(uid_t owner) { return owner == 0 || isOwnUser(owner); }

/// Whoever owns a link on the way to the directory decides where clients arrive.
void checkLinks(const std::string& path, const fs::path& directory, int depth = 0) {
  constexpr int MOST = 40;  // the kernel follows no more, path_resolution(7)
  if (depth > MOST) return;
  fs::path place;
  for (const fs::path& part : directory) {
    place /= part;
    struct stat status {};
    if (::lstat(place.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) continue;
    if (!isTrusted(status.st_uid)) {
      fail(path, "is not safe: " + place.string() + " is a link of user " +
                     std::to_string(status.st_uid) + ", who can lead clients elsewhere");
    }
    std::error_code error;
    const fs::path target = fs::read_symlink(place, error);
    checkLinks(path, (place.parent_path() / target).lexically_normal(), depth + 1);
  }
}

void makeDirectory(const std::string& path) {
  const std::string directory = directoryOfSocket(path);
  checkLinks(path, directory);
  if (::mkdir(directory.c_str(), 0700) == 0) {
    (void)::chmod(directory.c_str(), DIRECTORY_MODE);  // mkdir's mode is subject to the umask
  } else if (errno != EEXIST) {
    fail(path, "cannot be made: " + directory + ": " + std::generic_category().message(errno));
  }
}

}  // namespace

std::string directoryOfSocket(const std::string& path) {
  return fs::absolute(path).lexically_normal().parent_path().string();
}

// The socket alone does not keep strangers out: they could put another one in its place.
void checkDirectory(const std::string& path) {
  const std::string directory = directoryOfSocket(path);
  checkLinks(path, directory);
  struct stat status {};
  if (::stat(directory.c_str(), &status) != 0) {
    fail(path, "cannot be made: " + directory + ": " + std::generic_category().message(errno));
  }
  if (!isTrusted(status.st_uid)) {
    fail(path, "is not safe: its directory " + directory + " belongs to user " +
                   std::to_string(status.st_uid) + ", who can put another one in its place");
  }
  if ((status.st_mode & S_IRWXO) != 0 || (status.st_mode & S_IWGRP) != 0) {
    fail(path, "is not safe: others can enter or change its directory " + directory +
                   "; mode 0750 would be right");
  }
}

stream_protocol::acceptor listenAt(asio::io_context& io, const std::string& path) {
  const stream_protocol::endpoint endpoint = endpointAt(path);
  makeDirectory(path);
  checkDirectory(path);
  removeStale(io, endpoint);
  stream_protocol::acceptor acceptor(io);
  asio::error_code error;
  (void)acceptor.open(endpoint.protocol(), error);
  // The library opens sockets without the flag.
  if (!error) (void)::fcntl(acceptor.native_handle(), F_SETFD, FD_CLOEXEC);
  if (!error) (void)acceptor.bind(endpoint, error);
  if (!error && ::chmod(path.c_str(), SOCKET_MODE) != 0) {
    error.assign(errno, asio::error::get_system_category());
  }
  if (!error) (void)acceptor.listen(asio::socket_base::max_listen_connections, error);
  // A client may be gone again by the time that it is to be taken.
  if (!error) (void)acceptor.native_non_blocking(true, error);
  if (error) fail(path, "cannot be listened on: " + error.message());
  return acceptor;
}

FileIdentity identityOf(const std::string& path) {
  struct stat status {};
  if (::lstat(path.c_str(), &status) != 0) return {};
  return {status.st_dev, status.st_ino};
}

}  // namespace agent
