// One client's session on the bridge, as the callbacks of the modules see it.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "agent/base/quota.h"

/// Who is at the other end, from the kernel's word for it, and the command that runs, if one does.
/// One command of a session runs at a time, on one thread.
class BridgeSession {
 public:
  /// What a command and the callbacks that it ends in tell each other, beyond input and result.
  struct RunningCommand {
    bool force = false;            ///< it confirms a save that would be refused otherwise
    std::string message = {};      ///< why it saves, in the client's words
    std::string refusal = {};      ///< why it was not authorised, in words; empty if it was
    std::string saveFailure = {};  ///< why its save failed, in words; empty if none did
    uint64_t revision = 0;         ///< that its save has made in the history; 0 if none
  };

  /// `groups` are the groups of the client's process besides `gid`; `program` is its name.
  BridgeSession(uid_t uid, gid_t gid, pid_t pid, std::vector<gid_t> groups = {},
                std::string program = {})
      : uid(uid), gid(gid), pid(pid), groups(std::move(groups)), program(std::move(program)) {}

  const uid_t uid;
  const gid_t gid;
  const pid_t pid;
  const std::vector<gid_t> groups;
  const std::string program;  ///< any bytes that the process has chosen, for the log alone

  RunningCommand command;

  /// What its reply takes of the memory for all sessions; null if nobody counts.
  agent::QuotaShare* replyBytes = nullptr;

  /// The session whose command runs on this thread; null outside of one. For a callback that is
  /// told nothing: the save hook.
  static BridgeSession*& current() {
    thread_local BridgeSession* session = nullptr;
    return session;
  }
};
