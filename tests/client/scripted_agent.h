// An agent that says what a test wants it to.
#pragma once

#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "bridge/protocol.h"

namespace client_testing {

/// The agent's end of a connection.
class Peer {
 public:
  explicit Peer(int socket) : socket_(socket) {}

  /// So many bytes, or fewer if the client closes first.
  std::string read(size_t size) const;

  /// Waits until the client closes.
  void readToEnd() const;

  void write(const std::string& bytes) const;

 private:
  const int socket_;
};

/// Listens in a directory of its own and serves one client, on a thread. The connection is closed
/// where the script ends.
class ScriptedAgent {
 public:
  using Script = std::function<void(const Peer&)>;

  explicit ScriptedAgent(Script script);

  /// One that exchanges the hellos, keeps the commands and gives these replies.
  explicit ScriptedAgent(std::vector<bridge::Reply> replies);

  ~ScriptedAgent();

  ScriptedAgent(const ScriptedAgent&) = delete;
  ScriptedAgent& operator=(const ScriptedAgent&) = delete;

  /// The requests that were answered: "read IKE", "write ADMIN" or "write ADMIN at revision 7" and
  /// the record as hexadecimal digits, "save", "forced save", "status", "subscribe", or the
  /// name of a command of the agent. REQUIRES: the
  /// client has ended.
  std::vector<std::string> commands();

  /// Whether a client has connected. REQUIRES: as above.
  bool wasReached();

  const std::string socketPath;

 private:
  void serve(const Script& script);
  void answer(const Peer& peer, const std::vector<bridge::Reply>& replies);
  void end();

  const int listener_;
  bool reached_ = false;
  std::vector<std::string> commands_;
  std::thread thread_;
};

/// The reply to a command that succeeded.
bridge::Reply done(std::string output = {});

/// The reply to one that did not.
bridge::Reply refused(std::string text, bridge::Reason reason = bridge::Reason::ModuleRefused);

}  // namespace client_testing
