// races ROUNDS [OPERATION OPERATION]: does both of each pair of operations at the same time, so
// many times, or those of one pair. Says which pair comes before it begins. Ends with 1 if an
// operation failed.
#include <pthread.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>

#include "agent/base/end_signals.h"
#include "tests/prove/races/operations.h"

namespace races {
namespace {

/// All that come leave together. Not the standard library's, which the tools do not know.
class Barrier {
 public:
  explicit Barrier(unsigned count) { (void)::pthread_barrier_init(&barrier_, nullptr, count); }
  ~Barrier() { (void)::pthread_barrier_destroy(&barrier_); }
  Barrier(const Barrier&) = delete;
  Barrier& operator=(const Barrier&) = delete;

  void wait() { (void)::pthread_barrier_wait(&barrier_); }

 private:
  pthread_barrier_t barrier_;
};

/// Two threads, which do what they are told at the same time.
class Pair {
 public:
  /// Before the agent is started: it gives small stacks to later threads.
  explicit Pair(AgentAtWork& agent) : agent_(agent) {
    for (size_t i = 0; i < threads_.size(); ++i) threads_[i] = std::thread([this, i] { work(i); });
  }

  ~Pair() {
    operations_ = {};
    begin_.wait();
    for (std::thread& thread : threads_) thread.join();
  }

  Pair(const Pair&) = delete;
  Pair& operator=(const Pair&) = delete;

  /// Returns what went wrong in either.
  std::string perform(const Operation& one, const Operation& other) {
    operations_ = {&one, &other};
    failures_ = {};
    begin_.wait();
    end_.wait();
    return failures_[0] + failures_[1];
  }

 private:
  void work(size_t number) {
    for (;;) {
      begin_.wait();
      if (operations_[number] == nullptr) return;
      try {
        operations_[number]->perform(agent_);
      } catch (const std::exception& error) {
        failures_[number] = std::string(operations_[number]->name) + ": " + error.what() + "\n";
      }
      end_.wait();
    }
  }

  AgentAtWork& agent_;
  std::array<const Operation*, 2> operations_{};
  std::array<std::string, 2> failures_;
  Barrier begin_{3};
  Barrier end_{3};
  std::array<std::thread, 2> threads_;
};

bool stops(const Operation& operation) { return operation.name == std::string_view("stop"); }

/// Returns whether all went well.
bool perform(AgentAtWork& agent, Pair& pair, const Operation& one, const Operation& other,
             int rounds) {
  std::cout << "pair " << one.name << ' ' << other.name << std::endl;
  const bool ends = stops(one) || stops(other);
  std::string failures;
  if (!ends) agent.start();
  for (int round = 0; round < rounds; ++round) {
    if (ends) agent.start();
    const std::string failed = pair.perform(one, other);
    if (ends) {
      agent.waitForEnd();  // nobody is served any more, or not to the end
    } else {
      failures += failed;
    }
  }
  if (!ends) {
    AgentAtWork::stop();
    agent.waitForEnd();
  }
  std::cout << failures << std::flush;
  return failures.empty();
}

const Operation& named(std::string_view name) {
  for (const Operation& operation : OPERATIONS) {
    if (name == operation.name) return operation;
  }
  if (name == PEEK.name) return PEEK;
  throw std::invalid_argument("there is no operation " + std::string(name));
}

bool run(int rounds, char** names) {
  AgentAtWork agent(MODULE_FILE);
  addObserver(agent.server());
  Pair pair(agent);
  if (names != nullptr) return perform(agent, pair, named(names[0]), named(names[1]), rounds);
  bool good = true;
  for (size_t i = 0; i < OPERATIONS.size(); ++i) {
    for (size_t j = i; j < OPERATIONS.size(); ++j) {
      good = perform(agent, pair, OPERATIONS[i], OPERATIONS[j], rounds) && good;
    }
  }
  return good;
}

}  // namespace
}  // namespace races

int main(int argc, char** argv) {
  if (argc != 2 && argc != 4) {
    std::cerr << "usage: races ROUNDS [OPERATION OPERATION]\n";
    return 2;
  }
  (void)std::signal(SIGPIPE, SIG_IGN);
  agent::holdEndSignals();
  try {
    return races::run(std::atoi(argv[1]), argc == 4 ? argv + 2 : nullptr) ? 0 : 1;
  } catch (const std::exception& error) {
    std::cerr << "races: " << error.what() << '\n';
    return 1;
  }
}
