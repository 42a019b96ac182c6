// bridge_stress SECONDS SOCKET: eight clients that read, write with revisions and save, all at
// once.
//
// Each write adds one to a number that the settings hold, so that in the end every write that was
// acknowledged can be accounted for. Prints the counts; exit status 1 if a write was lost or a
// request failed. Replaces the agent's user list.
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "bridge/protocol.h"
#include "client/connection.h"
#include "tests/support/records.h"

namespace {

using LPARAMS::Server::ParamGroup;
using testing_support::Settings;

constexpr size_t CLIENTS = 8;
constexpr int WRITES_PER_SAVE = 8;
constexpr std::chrono::seconds TIMEOUT{120};  // the agent may run under a slow tool

/// A number in the settings that counts writes, modulo its range.
struct Counter {
  const char* name;
  ParamGroup& (*group)(Settings&);
  uint64_t (*get)(Settings&);
  void (*set)(Settings&, uint64_t);
  uint64_t modulus;
};

const std::array COUNTERS = {
    Counter{"ADMIN.SESSION_EXPTIME", [](Settings& s) -> ParamGroup& { return s.adminGroup; },
            [](Settings& s) -> uint64_t { return s.adminGroup.SESSION_EXPTIME.value; },
            [](Settings& s, uint64_t n) {
              s.adminGroup.SESSION_EXPTIME.value = static_cast<unsigned>(n);
            },
            86401},
    Counter{
        "LOG.BACKUP_DEPTH", [](Settings& s) -> ParamGroup& { return s.logGroup; },
        [](Settings& s) -> uint64_t { return s.logGroup.BACKUP_DEPTH.value; },
        [](Settings& s, uint64_t n) { s.logGroup.BACKUP_DEPTH.value = static_cast<unsigned>(n); },
        1001},
    Counter{
        "IKE.MAX_HALFOPEN", [](Settings& s) -> ParamGroup& { return s.ikeGroup; },
        [](Settings& s) -> uint64_t { return s.ikeGroup.MAX_HALFOPEN.value; },
        [](Settings& s, uint64_t n) { s.ikeGroup.MAX_HALFOPEN.value = static_cast<unsigned>(n); },
        257},
    Counter{"USERS[0].NAME", [](Settings& s) -> ParamGroup& { return s.userList; },
            [](Settings& s) -> uint64_t { return std::stoull(s.userList.items.at(0)->NAME.value); },
            [](Settings& s, uint64_t n) { s.userList.items.at(0)->NAME.value = std::to_string(n); },
            UINT64_MAX},
};

using Counts = std::array<uint64_t, COUNTERS.size()>;

/// What one client has had acknowledged.
struct Tally {
  Counts writes{};
  uint64_t conflicts = 0;
  uint64_t saves = 0;
  std::string failure;
};

class Client {
 public:
  explicit Client(const std::string& socket) : connection_(socket, TIMEOUT) {}

  uint64_t read(const Counter& counter) {
    ParamGroup& group = counter.group(settings_);
    const bridge::Reply reply = ask({13, 1, testing_support::encodeName(group)});
    testing_support::decodeRecord(group, reply.output);
    revision_ = reply.revision;
    return counter.get(settings_);
  }

  /// Returns false if somebody else has written since the read.
  bool write(const Counter& counter, uint64_t value) {
    counter.set(settings_, value);
    bridge::Command command{13, 0, testing_support::encodeRecord(counter.group(settings_))};
    command.revision = revision_;
    const bridge::Reply reply = connection_.exchange(command);
    if (reply.reason == bridge::Reason::Conflict) return false;
    require(reply);
    return true;
  }

  void replaceUsers() {
    Settings settings;
    listAdd(settings.userList)->NAME.value = "0";
    (void)ask({13, 0, testing_support::encodeRecord(settings.userList)});
  }

  void save() { (void)ask({13, 2}); }

 private:
  static void require(const bridge::Reply& reply) {
    if (reply.result != 1) throw std::runtime_error(reply.text);
  }

  bridge::Reply ask(const bridge::Command& command) {
    bridge::Reply reply = connection_.exchange(command);
    require(reply);
    return reply;
  }

  client::Connection connection_;
  Settings settings_;
  uint64_t revision_ = 0;
};

void work(const std::string& socket, std::chrono::seconds duration, Tally& tally) try {
  Client client(socket);
  const auto end = std::chrono::steady_clock::now() + duration;
  for (int round = 0; std::chrono::steady_clock::now() < end; ++round) {
    for (size_t i = 0; i < COUNTERS.size(); ++i) {
      const Counter& counter = COUNTERS[i];
      while (!client.write(counter, (client.read(counter) + 1) % counter.modulus)) {
        ++tally.conflicts;
      }
      ++tally.writes[i];
    }
    if (round % WRITES_PER_SAVE == 0) {
      client.save();
      ++tally.saves;
    }
  }
} catch (const std::exception& error) {
  tally.failure = error.what();
}

Counts readAll(Client& client) {
  Counts values{};
  for (size_t i = 0; i < COUNTERS.size(); ++i) values[i] = client.read(COUNTERS[i]);
  return values;
}

/// Returns whether everything is as it should be.
bool stress(const std::string& socket, std::chrono::seconds duration) {
  Client client(socket);
  client.replaceUsers();
  const Counts before = readAll(client);

  std::array<Tally, CLIENTS> tallies;
  {
    std::vector<std::jthread> threads;
    for (Tally& tally : tallies) {
      threads.emplace_back([&] { work(socket, duration, tally); });
    }
  }

  const Counts after = readAll(client);
  bool good = true;
  uint64_t conflicts = 0;
  uint64_t saves = 0;
  for (const Tally& tally : tallies) {
    conflicts += tally.conflicts;
    saves += tally.saves;
    if (tally.failure.empty()) continue;
    std::cout << "failed: " << tally.failure << '\n';
    good = false;
  }
  uint64_t lost = 0;
  for (size_t i = 0; i < COUNTERS.size(); ++i) {
    const Counter& counter = COUNTERS[i];
    uint64_t writes = 0;
    for (const Tally& tally : tallies) writes += tally.writes[i];
    const uint64_t expected = (before[i] + writes) % counter.modulus;
    const uint64_t missing = (expected + counter.modulus - after[i]) % counter.modulus;
    std::cout << counter.name << ": " << writes << " writes acknowledged, " << missing << " lost\n";
    lost += missing;
  }
  std::cout << conflicts << " conflicts, each tried again; " << saves << " saves\n"
            << lost << " lost updates\n";
  return good && lost == 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: bridge_stress SECONDS SOCKET\n";
    return 2;
  }
  try {
    return stress(argv[2], std::chrono::seconds(std::atoi(argv[1]))) ? 0 : 1;
  } catch (const std::exception& error) {
    std::cerr << "bridge_stress: " << error.what() << '\n';
    return 1;
  }
}
