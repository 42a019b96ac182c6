#include "tests/system/bridge_client.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "lparams/params/command_stream.h"

namespace system_testing {

std::string groupInput(std::string_view name, std::string_view record) {
  std::string input;
  LPARAMS::Server::CommandStreamOut out{input};
  put(out, std::string(name));
  return input.append(record);
}

BridgeClient::BridgeClient(const std::string& socketPath)
    : socket_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  socketPath.copy(address.sun_path, sizeof address.sun_path - 1);
  if (connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    const int error = errno;
    (void)close(socket_);
    throw std::system_error(error, std::generic_category(), socketPath);
  }
}

BridgeClient::~BridgeClient() {
  if (socket_ >= 0) (void)close(socket_);
}

BridgeClient::BridgeClient(BridgeClient&& other) noexcept
    : socket_(std::exchange(other.socket_, -1)) {}

void BridgeClient::send(std::string_view bytes) const {
  while (!bytes.empty()) {
    const ssize_t sent = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent <= 0) return;  // what the agent says to that is for the test to receive
    bytes.remove_prefix(static_cast<size_t>(sent));
  }
}

void BridgeClient::endSending() const { (void)shutdown(socket_, SHUT_WR); }

std::string BridgeClient::receive(size_t size) const {
  std::string bytes(size, '\0');
  size_t received = 0;
  while (received < size) {
    const ssize_t count = recv(socket_, bytes.data() + received, size - received, 0);
    if (count <= 0) break;  // also a reset: the agent has closed without taking all that was sent
    received += static_cast<size_t>(count);
  }
  bytes.resize(received);
  return bytes;
}

bool BridgeClient::greet() const {
  send(bridge::encodeHello());
  return receive(bridge::HELLO_SIZE) == bridge::encodeHello();
}

template <typename Message>
Message BridgeClient::receiveMessage() const {
  const std::string head = receive(bridge::FRAME_HEAD_SIZE);
  if (head.size() < bridge::FRAME_HEAD_SIZE) throw std::runtime_error("there is no message");
  auto message = bridge::decodeMessage(receive(bridge::decodeFrameHead(head)));
  if (!message || !std::holds_alternative<Message>(*message)) {
    throw std::runtime_error("the message is another one, or malformed");
  }
  return std::get<Message>(std::move(*message));
}

bridge::Reply BridgeClient::receiveReply() const { return receiveMessage<bridge::Reply>(); }

bridge::Notice BridgeClient::receiveNotice() const { return receiveMessage<bridge::Notice>(); }

bridge::Reply BridgeClient::call(const bridge::Command& command) const {
  send(bridge::encode(command));
  return receiveReply();
}

bridge::Reply BridgeClient::call(const std::string& name, const std::string& input) const {
  send(bridge::encode(bridge::AgentCommand{name, input}));
  return receiveReply();
}

std::string BridgeClient::state() const {
  send(bridge::encode(bridge::StatusRequest{}));
  return receiveReply().output;
}

bridge::Reply BridgeClient::read(std::string_view group) const {
  return call({SETTINGS_MODULE, READ_GROUP, groupInput(group)});
}

bridge::Reply BridgeClient::write(std::string_view group, std::string_view record) const {
  return call({SETTINGS_MODULE, WRITE_GROUP, groupInput(group, record)});
}

bridge::Reply BridgeClient::save() const { return call({SETTINGS_MODULE, SAVE}); }

}  // namespace system_testing
