// One client's session on the bridge.
#pragma once

#include <sys/types.h>

#include <string>

/// Who is at the other end, from the kernel's word for it, and what the running command was
/// refused. One command of a session runs at a time, on one thread.
class BridgeSession {
 public:
  BridgeSession(uid_t uid, gid_t gid, pid_t pid) : uid(uid), gid(gid), pid(pid) {}

  const uid_t uid;
  const gid_t gid;
  const pid_t pid;

  /// Why the running command was not authorised, in words; empty if nothing was refused.
  std::string refusal;
};
