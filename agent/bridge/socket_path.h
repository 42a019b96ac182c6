// The place of the bridge's socket in the file system.
#pragma once

#include <sys/types.h>

#include <asio/io_context.hpp>
#include <asio/local/stream_protocol.hpp>
#include <string>

namespace agent {

/// Listens on a Unix stream socket. A directory that is not there is made, and a socket that nobody
/// listens on any more is replaced. The socket can be used by the agent's user and its group.
/// Throws StartFailure if the path cannot be listened on, or its directory is none that
/// checkDirectory() takes.
asio::local::stream_protocol::acceptor listenAt(asio::io_context& io, const std::string& path);

/// Throws StartFailure if others can enter the socket's directory, or somebody else than root and
/// the agent's user owns that or a link on the way to it.
void checkDirectory(const std::string& path);

/// Absolute.
std::string directoryOfSocket(const std::string& path);

/// Which file has a name. Its number is no other's as long as somebody has it open or bound.
struct FileIdentity {
  dev_t device = 0;
  ino_t number = 0;

  bool operator==(const FileIdentity&) const = default;
};

/// Of the name itself, if that is a link; all 0 if there is none.
FileIdentity identityOf(const std::string& path);

}  // namespace agent
