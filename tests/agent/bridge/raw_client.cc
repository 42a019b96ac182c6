#include "tests/agent/bridge/raw_client.h"

#include <linux/sockios.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace agent_testing {

RawClient::RawClient(const std::string& socketPath)
    : socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  (void)socketPath.copy(address.sun_path, sizeof address.sun_path - 1);
  if (::connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    throw std::system_error(errno, std::generic_category(), socketPath);
  }
}

void RawClient::send(const std::string& bytes) const {
  size_t sent = 0;
  while (sent < bytes.size()) {
    const ssize_t size = ::send(socket_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
    if (size <= 0) return;
    sent += static_cast<size_t>(size);
  }
}

void RawClient::waitUntilTaken() const {
  for (int left = 1; left > 0; ::usleep(100)) {
    if (::ioctl(socket_, SIOCOUTQ, &left) != 0) return;
  }
}

std::string RawClient::read(size_t size) const {
  std::string bytes;
  char buffer[65536];
  while (bytes.size() < size) {
    const ssize_t got = ::recv(socket_, buffer, std::min(sizeof buffer, size - bytes.size()), 0);
    if (got <= 0) break;
    bytes.append(buffer, static_cast<size_t>(got));
  }
  return bytes;
}

std::string RawClient::readToEnd() const { return read(std::string::npos); }

bool RawClient::isClosed() const {
  char byte = 0;
  return ::recv(socket_, &byte, 1, MSG_PEEK | MSG_DONTWAIT) == 0;
}

bool RawClient::greet() const {
  send(bridge::encodeHello());
  return read(bridge::HELLO_SIZE) == bridge::encodeHello();
}

std::optional<bridge::Message> RawClient::receive() const {
  const std::string head = read(bridge::FRAME_HEAD_SIZE);
  if (head.size() < bridge::FRAME_HEAD_SIZE) return std::nullopt;
  return bridge::decodeMessage(read(bridge::decodeFrameHead(head)));
}

bridge::Reply RawClient::exchange(const bridge::Request& request) const {
  send(bridge::encode(request));
  return std::get<bridge::Reply>(receive().value());
}

void RawClient::close() {
  if (socket_ >= 0) (void)::close(std::exchange(socket_, -1));
}

}  // namespace agent_testing
