// The module's end of the command bridge.
#pragma once

#include <string>

#include "lparams/params/command_stream.h"
#include "lparams/server.h"
#include "platform/command_bridge.h"

namespace LPARAMS::Server {

/// Serves the three commands of the module. Registered with the bridge from construction to
/// destruction, so the bridge's threads may enter it at any time between.
class Factory : public CommandListener {
 public:
  Factory();
  ~Factory() override;

  /// Commands: 0 writes a group, 1 reads one, 2 saves. `in` holds, for 0 and 1, the group's name
  /// (4-byte length and bytes) and, for 0, the group's record; 1 appends the record to `out`.
  /// Returns 0 if the command is unknown, not authorised, or names no member of the root. Throws
  /// COMMAND_STREAM_ERROR at an input that is too short; members read before that keep their new
  /// values, and observers have seen a begin without an end. Thread-safe.
  ///
  /// Kept oddities, for whoever guards the settings: reading is not authorised at all, bytes behind
  /// a complete record are ignored, and the text of a failed save is dropped.
  int ExecCommand(BridgeSession& session, long cmd, const std::string& in,
                  std::string& out) override;

  Server_t server;

 private:
  int writeGroup(CommandStreamIn& in);
  int readGroup(CommandStreamIn& in, std::string& out);
  int save();
};

}  // namespace LPARAMS::Server
