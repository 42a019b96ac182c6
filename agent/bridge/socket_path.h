// The place of the bridge's socket in the file system.
#pragma once

#include <sys/types.h>

#include <asio/io_context.hpp>
#include <asio/local/stream_protocol.hpp>
#include <optional>
#include <string>

namespace agent {

/// Listens on a Unix stream socket. A directory that is not there is made, and a socket that nobody
/// listens on any more is replaced. The socket can be used by the agent's user and, if given, by
/// the members of the group. Throws StartFailure if the path cannot be listened on or others can
/// enter its directory.
asio::local::stream_protocol::acceptor listenAt(asio::io_context& io, const std::string& path,
                                                std::optional<gid_t> group);

}  // namespace agent
