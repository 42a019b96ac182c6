#include <algorithm>
#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <stop_token>
#include <thread>

#include "bench/store.h"
#include "bench/subject.h"

namespace bench {
namespace {

constexpr unsigned USER_COUNTS[] = {0, 100, 10'000};
constexpr double BATCH_SECONDS = 200e-6;

}  // namespace

int batchOf(const Subject& subject) {
  (void)subject.measure(1);
  return std::clamp(static_cast<int>(BATCH_SECONDS / subject.measure(1)), 1, 1000);
}

void runAll(const std::string& module, const std::string& directory,
            const std::function<void(const Subjects&, const Facts&)>& run) {
  const Place place{module, directory};
  std::filesystem::create_directories(directory);
  const Facts facts = memoryFacts(place);

  // In a process with one thread the C library takes its locks in a cheaper way. An agent has more.
  std::jthread second([](std::stop_token stop) {
    std::mutex mutex;
    std::unique_lock lock(mutex);
    std::condition_variable_any().wait(lock, stop, [] { return false; });
  });

  {
    Subjects subjects;
    for (const unsigned users : USER_COUNTS) {
      addStoreSubjects(subjects, place, users);
      addLimitSubjects(subjects, place, users);
#ifdef BENCH_PEERS
      addPeerSubjects(subjects, place, users);
#endif
    }
    run(subjects, facts);
  }
  std::filesystem::remove_all(directory);
}

}  // namespace bench
