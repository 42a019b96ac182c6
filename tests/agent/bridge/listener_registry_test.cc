#include "agent/bridge/listener_registry.h"

#include <gmock/gmock.h>

#include <atomic>
#include <latch>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "tests/agent/bridge/scripted_listener.h"

using agent_testing::MODULE;
using agent_testing::ScriptedListener;

namespace agent {
namespace {

using Outcome = ListenerRegistry::Outcome;

class ListenerRegistryTest : public testing::Test {
 protected:
  ListenerRegistry::Result execute(const std::string& in = {}, ModuleIdType module = MODULE) {
    return registry.execute(session, module, 5, in, out);
  }

  ListenerRegistry registry;
  BridgeSession session{1000, 1000, 1};
  std::string out;
};

TEST_F(ListenerRegistryTest, PassesACommandToTheModulesListener) {
  ScriptedListener other([](long, const std::string&, std::string&) { return 0; },
                         ModuleIdType{78});
  ScriptedListener listener([](long cmd, const std::string& in, std::string& reply) {
    reply += std::to_string(cmd) + in;
    return 1;
  });
  registry.add(&other);
  registry.add(&listener);
  out = "before ";
  EXPECT_EQ(execute(std::string("i\0n", 3)).outcome, Outcome::Succeeded);
  EXPECT_EQ(out, std::string("before 5i\0n", 11));
}

TEST_F(ListenerRegistryTest, TellsTheListenersTruthValue) {
  for (const int value : {1, 7, -1}) {
    ScriptedListener listener([=](long, const std::string&, std::string&) { return value; });
    registry.add(&listener);
    const auto result = execute();
    EXPECT_EQ(result.outcome, Outcome::Succeeded);
    EXPECT_EQ(result.value, value);
    registry.remove(&listener);
  }
  ScriptedListener refusing([](long, const std::string&, std::string&) { return 0; });
  registry.add(&refusing);
  const auto result = execute();
  EXPECT_EQ(result.outcome, Outcome::Refused);
  EXPECT_EQ(result.value, 0);
  EXPECT_EQ(result.error, "");
}

TEST_F(ListenerRegistryTest, TellsWhatAListenerThrew) {
  const struct {
    ScriptedListener::Script script;
    Outcome outcome;
    const char* error;
  } rows[] = {
      {[](long, const std::string&, std::string&) -> int { throw "CommandStreamError"; },
       Outcome::MalformedInput, "CommandStreamError"},
      {[](long, const std::string&, std::string&) -> int { throw std::runtime_error("no room"); },
       Outcome::Failed, "no room"},
      {[](long, const std::string&, std::string&) -> int { throw 5; }, Outcome::Failed,
       "an exception of a type that the agent does not know"},
  };
  for (const auto& row : rows) {
    ScriptedListener listener(row.script);
    registry.add(&listener);
    const auto result = execute();
    EXPECT_EQ(result.outcome, row.outcome) << row.error;
    EXPECT_EQ(result.value, 0) << row.error;
    EXPECT_EQ(result.error, row.error);
    registry.remove(&listener);  // comes back: the command has ended
  }
}

TEST_F(ListenerRegistryTest, KnowsNoModuleWithoutAListener) {
  EXPECT_EQ(execute().outcome, Outcome::NoSuchModule);
  ScriptedListener listener;
  registry.add(&listener);
  EXPECT_EQ(execute({}, ModuleIdType{78}).outcome, Outcome::NoSuchModule);
  EXPECT_EQ(execute().outcome, Outcome::Succeeded);
  registry.remove(&listener);
  EXPECT_EQ(execute().outcome, Outcome::NoSuchModule);
}

TEST_F(ListenerRegistryTest, AsksTheFirstListenerOfAModule) {
  ScriptedListener first([](long, const std::string&, std::string&) { return 1; });
  ScriptedListener second([](long, const std::string&, std::string&) { return 2; });
  registry.add(&first);
  registry.add(&second);
  EXPECT_EQ(execute().value, 1);
  registry.remove(&first);
  EXPECT_EQ(execute().value, 2);
}

TEST_F(ListenerRegistryTest, RemovesAListenerThatIsNotThere) {
  ScriptedListener listener;
  registry.remove(&listener);
  registry.add(&listener);
  registry.remove(&listener);
  registry.remove(&listener);
  EXPECT_EQ(execute().outcome, Outcome::NoSuchModule);
}

TEST_F(ListenerRegistryTest, RunsCommandsOfOneListenerSideBySide) {
  constexpr int COMMANDS = 4;
  std::latch all(COMMANDS);
  ScriptedListener listener([&](long, const std::string&, std::string&) {
    all.arrive_and_wait();  // comes back only when all of them run
    return 1;
  });
  registry.add(&listener);
  std::atomic<int> succeeded = 0;
  {
    std::vector<std::jthread> threads;
    for (int i = 0; i < COMMANDS; ++i) {
      threads.emplace_back([&] {
        BridgeSession own(1000, 1000, 1);
        std::string reply;
        const auto result = registry.execute(own, MODULE, 0, {}, reply);
        if (result.outcome == Outcome::Succeeded) ++succeeded;
      });
    }
  }
  EXPECT_EQ(succeeded, COMMANDS);
}

TEST_F(ListenerRegistryTest, RemovesAListenerWhenItsCommandsHaveEndedAndStartsNoMore) {
  constexpr long LONG_COMMAND = 0;
  constexpr long SHORT_COMMAND = 1;
  std::latch running(1);
  std::latch mayEnd(1);
  std::atomic<bool> ended = false;
  ScriptedListener listener([&](long cmd, const std::string&, std::string&) {
    if (cmd == SHORT_COMMAND) return 1;
    running.count_down();
    mayEnd.wait();
    ended = true;
    return 1;
  });
  registry.add(&listener);
  std::jthread command([&] { (void)registry.execute(session, MODULE, LONG_COMMAND, {}, out); });
  running.wait();

  std::atomic<bool> removed = false;
  std::jthread remover([&] {
    registry.remove(&listener);
    EXPECT_TRUE(ended);
    removed = true;
  });
  // The removal has begun when no command starts any more.
  BridgeSession other(1000, 1000, 2);
  std::string reply;
  while (registry.execute(other, MODULE, SHORT_COMMAND, {}, reply).outcome == Outcome::Succeeded) {
    std::this_thread::yield();
  }
  EXPECT_FALSE(removed) << "while the command runs";
  mayEnd.count_down();
  remover.join();
  EXPECT_TRUE(removed);
}

TEST_F(ListenerRegistryTest, ServesThePlatformsFunctions) {
  ScriptedListener listener;
  std::string reply;
  AddCommandListener(&listener);
  EXPECT_EQ(listenerRegistry().execute(session, MODULE, 0, {}, reply).outcome, Outcome::Succeeded);
  DelCommandListener(&listener);
  EXPECT_EQ(listenerRegistry().execute(session, MODULE, 0, {}, reply).outcome,
            Outcome::NoSuchModule);
}

}  // namespace
}  // namespace agent
