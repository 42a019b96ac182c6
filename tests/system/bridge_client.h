// A client of the bridge that sends what a test wants, legal or not.
#pragma once

#include <string>
#include <string_view>

#include "bridge/protocol.h"
#include "lparams/interface/commands.h"

namespace system_testing {

inline constexpr int32_t SETTINGS_MODULE = 13;
using LPARAMS::Server::READ_GROUP;
using LPARAMS::Server::SAVE;
using LPARAMS::Server::WRITE_GROUP;

/// The input of a command that reads or writes: the group's name as a string of the bridge, then
/// its record.
std::string groupInput(std::string_view name, std::string_view record = {});

class BridgeClient {
 public:
  /// Connects. Throws std::system_error.
  explicit BridgeClient(const std::string& socketPath);
  ~BridgeClient();

  BridgeClient(BridgeClient&& other) noexcept;
  BridgeClient(const BridgeClient&) = delete;
  BridgeClient& operator=(const BridgeClient&) = delete;
  BridgeClient& operator=(BridgeClient&&) = delete;

  /// Sends the bytes, as far as the agent takes them before it closes the session.
  void send(std::string_view bytes) const;

  /// Tells the agent that nothing follows; replies still arrive.
  void endSending() const;

  /// So many bytes, or fewer if the agent closes the session first.
  std::string receive(size_t size) const;

  /// Waits until the agent closes the session. True if it sends nothing before it does.
  bool isClosed() const { return receive(1).empty(); }

  /// Exchanges the hellos. Returns false if the agent does not answer with its own.
  bool greet() const;

  /// The next reply. Throws std::runtime_error if there is none or it is malformed.
  bridge::Reply receiveReply() const;

  /// The same for the next notice.
  bridge::Notice receiveNotice() const;

  bridge::Reply call(const bridge::Command& command) const;

  /// A command of the agent itself.
  bridge::Reply call(const std::string& name, const std::string& input) const;

  /// The agent's state, a JSON object.
  std::string state() const;

  // Commands of the settings module.
  bridge::Reply read(std::string_view group) const;
  bridge::Reply write(std::string_view group, std::string_view record) const;
  bridge::Reply save() const;

 private:
  template <typename Message>
  Message receiveMessage() const;

  int socket_;
};

}  // namespace system_testing
