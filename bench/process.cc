#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <stdexcept>
#include <thread>

#include "bench/latency.h"

namespace bench {
namespace {

constexpr auto START_LIMIT = std::chrono::seconds(10);
constexpr auto RETRY_PAUSE = std::chrono::milliseconds(20);

}  // namespace

Process::~Process() {
  (void)::kill(id_, SIGKILL);
  (void)::waitpid(id_, nullptr, 0);
}

std::unique_ptr<Process> startFunction(const std::function<void()>& function) {
  const int id = ::fork();
  if (id < 0) throw std::runtime_error("no process can be started");
  if (id == 0) {
    function();
    ::_exit(0);
  }
  return std::make_unique<Process>(id);
}

std::unique_ptr<Process> startCommand(const std::vector<std::string>& command) {
  std::vector<char*> arguments;
  for (const auto& argument : command) arguments.push_back(const_cast<char*>(argument.c_str()));
  arguments.push_back(nullptr);
  return startFunction([&] {
    (void)::execvp(arguments[0], arguments.data());
    std::perror(arguments[0]);
  });
}

int connectTo(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
  const auto giveUp = std::chrono::steady_clock::now() + START_LIMIT;
  while (std::chrono::steady_clock::now() < giveUp) {
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (::connect(socket, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0) {
      return socket;
    }
    (void)::close(socket);
    std::this_thread::sleep_for(RETRY_PAUSE);
  }
  throw std::runtime_error("nobody listens on " + path);
}

void sendAll(int socket, const std::string& bytes) {
  if (::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL) !=
      static_cast<ssize_t>(bytes.size())) {
    throw std::runtime_error("a request cannot be sent");
  }
}

void receiveAll(int socket, char* bytes, size_t size) {
  while (size > 0) {
    const ssize_t got = ::recv(socket, bytes, size, 0);
    if (got <= 0) throw std::runtime_error("a reply did not arrive");
    bytes += got;
    size -= static_cast<size_t>(got);
  }
}

}  // namespace bench
