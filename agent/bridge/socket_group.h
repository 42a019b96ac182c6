// Which group can reach the socket.
#pragma once

#include <asio/io_context.hpp>
#include <string>

#include "agent/base/mutex.h"
#include "agent/bridge/authorisation.h"
#include "agent/bridge/change_tracker.h"

namespace agent {

/// Has the socket and its directory belong to the administrators' group, at first and after each
/// write of the settings that name it. Where that cannot be, they belong to the agent's own group,
/// and the log says why. Runs on the context's thread but where it says so.
class SocketGroup {
 public:
  /// REQUIRES: the socket is there; the context, the rules and the tracker outlive this object, and
  /// the context runs nothing after its end.
  SocketGroup(asio::io_context& io, std::string socket, const AccessRules& rules,
              ChangeTracker& changes);
  ~SocketGroup();

  SocketGroup(const SocketGroup&) = delete;
  SocketGroup& operator=(const SocketGroup&) = delete;

  /// Why the administrators' group cannot reach the socket; empty if it can, or if there is to be
  /// none. Thread-safe.
  std::string problem() const;

 private:
  void follow();
  std::string giveTo(const std::string& group) const;
  std::string giveTo(gid_t group) const;

  const std::string socket_;
  const std::string directory_;
  const AccessRules& rules_;
  ChangeTracker& changes_;
  mutable Mutex mutex_;
  std::string problem_ GUARDED_BY(mutex_);
  ChangeTracker::Ticket subscription_;
};

}  // namespace agent
