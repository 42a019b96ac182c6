// What the benchmark times: the store, the limits it is measured against, and its peers.
#pragma once

#include <chrono>
#include <cstdlib>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace bench {

/// Something to be timed. Names have the form operation/who/users, the last part only where the
/// time depends on the number of users.
struct Subject {
  std::string name;
  std::function<double(int)> measure;  ///< executes it that many times; returns the seconds it took
};

using Subjects = std::vector<Subject>;

inline std::string label(const std::string& operation, const std::string& who, size_t users) {
  return operation + '/' + who + '/' + std::to_string(users);
}

/// Keeps the compiler from leaving out what produced the value.
template <typename T>
void keep(const T& value) {
  asm volatile("" : : "r,m"(value) : "memory");
}

class Stopwatch {
 public:
  double seconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
  }

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

/// Has the C library put together what was freed, which it otherwise does at the next large
/// request: dropping the former document is not to be timed.
inline void settleHeap() {
  constexpr size_t LARGE = 100'000;
  void* volatile block = std::malloc(LARGE);
  std::free(block);
}

/// Times the executions as a whole.
template <typename Run>
std::function<double(int)> timed(Run run) {
  return [run](int times) mutable {
    const Stopwatch stopwatch;
    for (; times > 0; --times) run();
    return stopwatch.seconds();
  };
}

/// Times each execution on its own, without the preparation that goes before it.
template <typename Prepare, typename Run>
std::function<double(int)> timed(Prepare prepare, Run run) {
  return [prepare, run](int times) mutable {
    double seconds = 0;
    for (; times > 0; --times) {
      prepare();
      settleHeap();
      const Stopwatch stopwatch;
      run();
      seconds += stopwatch.seconds();
    }
    return seconds;
  };
}

/// Each subject has its turn in each round.
constexpr int ROUNDS = 45;

/// How often to execute a subject in one go, so that reading the clock does not count.
int batchOf(const Subject& subject);

/// Figures that are not times, by name.
using Facts = std::map<std::string, double>;

/// Runs the whole benchmark: every subject that has a file keeps it in `directory`, which should be
/// on a memory file system. Calls `run` with all subjects, while a second thread is alive.
void runAll(const std::string& module, const std::string& directory,
            const std::function<void(const Subjects&, const Facts&)>& run);

}  // namespace bench
