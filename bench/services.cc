#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <stdexcept>

#include "bench/latency.h"
#include "bridge/protocol.h"
#include "lparams/interface/commands.h"
#include "lparams/params/command_stream.h"
#include "platform/command_bridge.h"

namespace bench {
namespace {

std::string readRequest() {
  bridge::Command command{LPARAMS_MODULE_ID, LPARAMS::Server::READ_GROUP, {}};
  LPARAMS::Server::CommandStreamOut input{command.input};
  put(input, std::string("IKE"));
  return bridge::encode(command);
}

/// The bytes behind the head of the next frame.
std::string_view receiveFrame(int socket, std::string& buffer) {
  size_t have = 0;
  size_t need = bridge::FRAME_HEAD_SIZE;
  while (have < need) {
    const ssize_t got = ::recv(socket, buffer.data() + have, buffer.size() - have, 0);
    if (got <= 0) throw std::runtime_error("the agent does not answer");
    have += static_cast<size_t>(got);
    if (have >= bridge::FRAME_HEAD_SIZE) {
      need = bridge::FRAME_HEAD_SIZE + bridge::decodeFrameHead(buffer);
    }
  }
  return std::string_view(buffer).substr(bridge::FRAME_HEAD_SIZE, need - bridge::FRAME_HEAD_SIZE);
}

[[noreturn]] void echo(int listener) {
  for (;;) {
    const int client = ::accept(listener, nullptr, nullptr);
    // One process a client, so that several are served as the agent serves them: at a time.
    if (::fork() != 0) {
      (void)::close(client);
      continue;
    }
    char bytes[4096];
    for (ssize_t size; (size = ::recv(client, bytes, sizeof bytes, 0)) > 0;) {
      if (::send(client, bytes, static_cast<size_t>(size), MSG_NOSIGNAL) != size) break;
    }
    ::_exit(0);
  }
}

}  // namespace

Service bridgeService(const std::string& path) {
  return {"lparams", [path]() -> RoundTrip {
            const int socket = connectTo(path);
            sendAll(socket, bridge::encodeHello());
            std::string buffer(64 * 1024, '\0');
            receiveAll(socket, buffer.data(), bridge::HELLO_SIZE);
            const std::string request = readRequest();
            sendAll(socket, request);
            const std::string expected(receiveFrame(socket, buffer));
            const auto message = bridge::decodeMessage(expected);
            const auto* const reply = message ? std::get_if<bridge::Reply>(&*message) : nullptr;
            if (reply == nullptr || reply->result != 1) {
              throw std::runtime_error("the agent refused a read");
            }
            return [socket, request, expected, buffer]() mutable {
              sendAll(socket, request);
              if (receiveFrame(socket, buffer) != expected) {
                throw std::runtime_error("the agent has changed its answer");
              }
            };
          }};
}

Service echoService(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
  const int listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (::bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
      ::listen(listener, SOMAXCONN) != 0) {
    throw std::runtime_error("the echo cannot listen");
  }
  std::shared_ptr<Process> server = startFunction([listener] { echo(listener); });
  (void)::close(listener);
  return {"echo", [path, server]() -> RoundTrip {
            return [socket = connectTo(path), request = readRequest()] {
              sendAll(socket, request);
              char bytes[4096];
              receiveAll(socket, bytes, request.size());
            };
          }};
}

}  // namespace bench
