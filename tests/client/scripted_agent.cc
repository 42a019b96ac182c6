#include "tests/client/scripted_agent.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <utility>

#include "lparams/params/command_stream.h"
#include "tests/support/readable_bytes.h"

namespace client_testing {
namespace {

int check(int result, const char* what) {
  if (result < 0) throw std::system_error(errno, std::generic_category(), what);
  return result;
}

std::string newSocketPath() {
  std::string directory = testing::TempDir() + "lparams-XXXXXX";
  if (mkdtemp(directory.data()) == nullptr) check(-1, "mkdtemp");
  return directory + "/agent.sock";
}

int listenAt(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  const int listener = check(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0), "socket");
  check(bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address), "bind");
  check(listen(listener, 1), "listen");
  return listener;
}

std::string describe(const bridge::Request& request) {
  if (std::holds_alternative<bridge::StatusRequest>(request)) return "status";
  if (std::holds_alternative<bridge::Subscription>(request)) return "subscribe";
  if (const auto* command = std::get_if<bridge::AgentCommand>(&request)) return command->name;
  const auto& command = std::get<bridge::Command>(request);
  if (command.module != 13) return "module " + std::to_string(command.module);
  if (command.command == 2) {
    return (command.force ? "forced save" : "save") + testing_support::hex(command.input);
  }
  std::string group;
  LPARAMS::Server::CommandStreamIn in(command.input);
  take(in, group);
  const std::string record = testing_support::hex(command.input.substr(in.pos));
  const uint64_t revision = command.revision.value_or(0);
  const std::string condition = revision == 0 ? "" : " at revision " + std::to_string(revision);
  if (command.command == 0) return "write " + group + condition + " " + record;
  if (command.command == 1) return "read " + group + record;
  return "command " + std::to_string(command.command);
}

}  // namespace

std::string Peer::read(size_t size) const {
  std::string bytes(size, '\0');
  const ssize_t count = recv(socket_, bytes.data(), size, MSG_WAITALL);
  bytes.resize(count > 0 ? static_cast<size_t>(count) : 0);
  return bytes;
}

void Peer::readToEnd() const {
  while (!read(1).empty()) continue;
}

void Peer::write(const std::string& bytes) const {
  // A client that is gone already is for the test to notice.
  (void)send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
}

ScriptedAgent::ScriptedAgent(Script script)
    : socketPath(newSocketPath()),
      listener_(listenAt(socketPath)),
      thread_([this, script = std::move(script)] { serve(script); }) {}

ScriptedAgent::ScriptedAgent(std::vector<bridge::Reply> replies)
    : ScriptedAgent(
          [this, replies = std::move(replies)](const Peer& peer) { answer(peer, replies); }) {}

ScriptedAgent::~ScriptedAgent() {
  end();
  (void)close(listener_);
  std::filesystem::remove_all(std::filesystem::path(socketPath).parent_path());
}

std::vector<std::string> ScriptedAgent::commands() {
  end();
  return commands_;
}

bool ScriptedAgent::wasReached() {
  end();
  return reached_;
}

void ScriptedAgent::serve(const Script& script) {
  const int connection = accept(listener_, nullptr, nullptr);
  if (connection < 0) return;  // the test is over, and no client came
  reached_ = true;
  script(Peer(connection));
  (void)close(connection);
}

void ScriptedAgent::answer(const Peer& peer, const std::vector<bridge::Reply>& replies) {
  if (peer.read(bridge::HELLO_SIZE) != bridge::encodeHello()) return;
  peer.write(bridge::encodeHello());
  for (const bridge::Reply& reply : replies) {
    const std::string head = peer.read(bridge::FRAME_HEAD_SIZE);
    if (head.empty()) return;
    const auto request = bridge::decodeRequest(peer.read(bridge::decodeFrameHead(head)));
    if (!request) return;
    commands_.push_back(describe(*request));
    peer.write(bridge::encode(reply));
  }
}

void ScriptedAgent::end() {
  if (!thread_.joinable()) return;
  (void)shutdown(listener_, SHUT_RDWR);  // so that the thread does not wait for a client any more
  thread_.join();
}

bridge::Reply done(std::string output) { return {1, bridge::Reason::None, {}, std::move(output)}; }

bridge::Reply refused(std::string text, bridge::Reason reason) {
  return {0, reason, std::move(text), {}};
}

}  // namespace client_testing
