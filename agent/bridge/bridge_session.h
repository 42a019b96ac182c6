// One client's session on the bridge.
#pragma once

#include <sys/types.h>

#include <string>
#include <utility>
#include <vector>

/// Who is at the other end, from the kernel's word for it, and what is said about the running
/// command beyond its result. One command of a session runs at a time, on one thread.
class BridgeSession {
 public:
  /// `groups` are the groups of the client's process besides `gid`.
  BridgeSession(uid_t uid, gid_t gid, pid_t pid, std::vector<gid_t> groups = {})
      : uid(uid), gid(gid), pid(pid), groups(std::move(groups)) {}

  const uid_t uid;
  const gid_t gid;
  const pid_t pid;
  const std::vector<gid_t> groups;

  /// The running command confirms a save that would be refused otherwise.
  bool force = false;

  /// Why the running command was not authorised, in words; empty if nothing was refused.
  std::string refusal;

  /// Why the running command's save failed, in words; empty if none did.
  std::string saveFailure;

  /// The session whose command runs on this thread; null outside of one. For callbacks that are
  /// told nothing: the save hook and the observers of the groups.
  static BridgeSession*& current() {
    thread_local BridgeSession* session = nullptr;
    return session;
  }
};
