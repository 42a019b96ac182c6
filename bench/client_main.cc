// Times the command-line client as a user meets it, from its start to its end: a value beside a
// program that prints one line, and a list of everything with 1,000 users beside the read of the
// same values over the bridge. In rounds, one after the other, all on the processor that the caller
// has pinned this program to.
//
// Usage: client_bench AGENT CLIENT ONE-LINE DIRECTORY REPORT
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "bench/latency.h"
#include "bridge/named_values.h"
#include "bridge/protocol.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int ROUNDS = 45;
constexpr int USERS = 1'000;

/// Runs the command to its end with its output dropped.
void run(const std::vector<std::string>& command) {
  std::vector<char*> arguments;
  for (const auto& argument : command) arguments.push_back(const_cast<char*>(argument.c_str()));
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  (void)::posix_spawn_file_actions_init(&actions);
  (void)::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t child = 0;
  const int failure =
      ::posix_spawn(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
  (void)::posix_spawn_file_actions_destroy(&actions);
  int status = 0;
  if (failure != 0 || ::waitpid(child, &status, 0) != child || status != 0) {
    throw std::runtime_error(command.front() + " " + command.back() + " failed");
  }
}

/// A session with the agent.
class Session {
 public:
  explicit Session(const std::string& path) : socket_(bench::connectTo(path)) {
    bench::sendAll(socket_, bridge::encodeHello());
    (void)receive(bridge::HELLO_SIZE);
  }
  ~Session() { (void)::close(socket_); }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  /// Throws unless the agent does it.
  void call(const std::string& name, const std::string& input) {
    bench::sendAll(socket_, bridge::encode(bridge::Request(bridge::AgentCommand{name, input})));
    const uint32_t size = bridge::decodeFrameHead(receive(bridge::FRAME_HEAD_SIZE));
    const auto message = bridge::decodeMessage(receive(size));
    const auto* const reply = message ? std::get_if<bridge::Reply>(&*message) : nullptr;
    if (reply == nullptr || reply->result == 0) throw std::runtime_error(name + " failed");
  }

 private:
  std::string receive(size_t size) {
    std::string bytes(size, '\0');
    bench::receiveAll(socket_, bytes.data(), size);
    return bytes;
  }

  const int socket_;
};

std::string manyUsers() {
  bridge::NamedChanges changes;
  for (int i = 0; i < USERS; ++i) {
    changes.changes.push_back({bridge::Change::AddUser, "user" + std::to_string(i)});
  }
  return bridge::encode(changes);
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 6) return 2;
  const std::string directory = argv[4];
  const std::string socket = directory + "/agent.sock";
  std::filesystem::create_directories(directory);
  std::filesystem::permissions(directory, std::filesystem::perms::owner_all);
  const auto agent = bench::startCommand({argv[1], "--state-dir", directory, "--socket", socket});
  Session session(socket);
  session.call("set", manyUsers());

  const std::pair<const char*, std::function<void()>> subjects[] = {
      {"one line", [&] { run({argv[3]}); }},
      {"get",
       [&] {
         run({argv[2], "--socket", socket, "get", "IKE.IKE_PORT"});
       }},
      {"bytes over the bridge", [&] { session.call("get", {}); }},
      {"list",
       [&] {
         run({argv[2], "--socket", socket, "list"});
       }},
  };
  std::map<std::string, std::vector<double>> times;  // in nanoseconds
  for (int round = 0; round < ROUNDS; ++round) {
    for (const auto& [name, action] : subjects) {
      const auto start = Clock::now();
      action();
      times[name].push_back(std::chrono::duration<double, std::nano>(Clock::now() - start).count());
    }
  }
  nlohmann::json report;
  for (auto& [name, values] : times) {
    std::ranges::nth_element(values, values.begin() + ROUNDS / 2);
    report[name] = values[ROUNDS / 2];
  }
  std::ofstream(argv[5]) << report.dump(2) << '\n';
  return 0;
} catch (const std::exception& failure) {
  std::fprintf(stderr, "client_bench: %s\n", failure.what());
  return 1;
}
