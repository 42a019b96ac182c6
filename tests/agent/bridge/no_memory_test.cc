// The bridge without memory: whatever allocation fails, the process goes on, the session that it
// hits ends, and the next client is served.
#include <gmock/gmock.h>

#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <atomic>
#include <cstdlib>
#include <new>
#include <optional>
#include <thread>

#include "agent/bridge/bridge_server.h"
#include "tests/agent/bridge/raw_client.h"
#include "tests/agent/bridge/served_module.h"
#include "tests/agent/state/scratch_directory.h"

namespace {

/// Allocations of other threads than the test's: this one, counted from 1, fails, and `further`
/// ones behind it. No one if it is 0.
std::atomic<int> failing = 0;
std::atomic<int> further = 0;
std::atomic<int> count = 0;
thread_local bool ownThread = false;

bool fails() {
  const int first = failing;
  if (first == 0 || ownThread) return false;
  const int number = ++count;
  return number >= first && number - first <= further;
}

}  // namespace

void* operator new(size_t size) {
  void* memory = fails() ? nullptr : std::malloc(size > 0 ? size : 1);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
// What Asio allocates by.
#pragma GCC visibility push(default)
extern "C" void* aligned_alloc(size_t alignment, size_t size) noexcept {
  void* memory = nullptr;
  return fails() || ::posix_memalign(&memory, alignment, size) != 0 ? nullptr : memory;
}
#pragma GCC visibility pop
void* operator new[](size_t size) { return operator new(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, size_t /*size*/) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory, size_t /*size*/) noexcept { std::free(memory); }

namespace agent {
namespace {

using agent_testing::adminRecord;
using agent_testing::RawClient;
using bridge::Reply;

const std::string NO_MEMORY = "there is no memory for the request or its reply; try again";

class NoMemory : public testing::TestWithParam<int> {
 protected:
  NoMemory() { ownThread = true; }
  ~NoMemory() override {
    failing = 0;
    asio::post(io_, [this] { server_.stop(); });
    loop_.join();
  }

  /// What a client may do; ends early where the agent closes the session. Returns whether it had
  /// all its replies.
  bool useAll() {
    const RawClient client(socket_);
    if (!client.greet()) return false;
    const bridge::Request requests[] = {
        bridge::Subscription{},
        bridge::AgentCommand{"watch", ""},
        bridge::StatusRequest{},
        bridge::Command{13, 1, testing_support::encodeName(testing_support::Settings().adminGroup)},
        bridge::Command{13, 0, adminRecord(20 + static_cast<unsigned>(count) % 100)},
        bridge::Command{77, 0, std::string(100'000, 'x')}};
    for (const bridge::Request& request : requests) {
      client.send(bridge::encode(request));
      std::optional<bridge::Message> message;
      do {
        message = client.receive();
        if (!message) return false;
        const auto* const reply = std::get_if<Reply>(&*message);
        if (reply != nullptr && reply->text == NO_MEMORY) wasTold_ = true;
      } while (!std::holds_alternative<Reply>(*message));
    }
    return true;
  }

  Reply readAdmin() { return module_.read("ADMIN"); }

  bool wasTold_ = false;  // a client

  const agent_testing::ScratchDirectory directory_;
  const std::string socket_ = directory_.at("socket");
  agent_testing::ServedModule module_;
  asio::io_context io_{1};
  BridgeServer server_{io_, socket_, module_.service()};
  std::thread loop_{[this] { io_.run(); }};
};

INSTANTIATE_TEST_SUITE_P(For, NoMemory, testing::Values(0, 3, 1'000'000),
                         [](const auto& further) -> std::string {
                           return further.param == 0   ? "OneAllocation"
                                  : further.param == 3 ? "AFew"
                                                       : "All";
                         });

TEST_P(NoMemory, NothingEndsButTheSession) {
  further = GetParam();
  int first = 1;
  for (bool reached = true; reached; ++first) {
    SCOPED_TRACE(first);
    const Reply before = readAdmin();
    count = 0;
    failing = first;
    (void)useAll();
    reached = count >= first;
    failing = 0;
    while (server_.sessions() > 0) std::this_thread::yield();
    ASSERT_TRUE(useAll());
    const Reply after = readAdmin();
    EXPECT_TRUE(after.output == before.output || after.revision > before.revision);
    while (server_.sessions() > 0) std::this_thread::yield();
  }
  EXPECT_GT(first, 30) << "so many allocations were there to fail";
  EXPECT_TRUE(wasTold_ || GetParam() > 0) << "there was memory for that";
}

}  // namespace
}  // namespace agent
