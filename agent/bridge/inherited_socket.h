// A listening socket that the service manager has made before it started the agent.
#pragma once

#include <asio/io_context.hpp>
#include <asio/local/stream_protocol.hpp>
#include <optional>
#include <string>

namespace agent {

/// The descriptor that the manager has passed to this process, nothing if there is none. Takes the
/// variables that tell it from the environment (sd_listen_fds(3)): a second call finds none. Throws
/// StartFailure if there are several. Not thread-safe: call it before there are threads.
std::optional<int> inheritedDescriptor();

/// Listens on that descriptor, which it takes over. Whoever has made the socket removes it. Throws
/// StartFailure unless it is a Unix stream socket that listens at the path, in a directory that
/// listenAt() would take.
asio::local::stream_protocol::acceptor listenOn(asio::io_context& io, int descriptor,
                                                const std::string& path);

}  // namespace agent
