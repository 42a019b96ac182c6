// The front end where Google Benchmark is not packaged, in 32 bit: a loop of the same shape that
// writes the same report, as far as it is read.
//
// Usage: store_bench MODULE DIRECTORY REPORT
#include <algorithm>
#include <cstdio>
#include <exception>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>

#include "bench/subject.h"

namespace {

constexpr int ROUNDS = 45;
constexpr double ROUND_SECONDS = 0.007;

struct Timing {
  const bench::Subject* subject;
  int batch;
  std::vector<double> seconds;
};

double perExecution(const bench::Subject& subject, int batch) {
  double seconds = 0;
  int executions = 0;
  do {
    seconds += subject.measure(batch);
    executions += batch;
  } while (seconds < ROUND_SECONDS);
  return seconds / executions;
}

double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 4) return 2;
  bench::runAll(argv[1], argv[2], [&](const bench::Subjects& subjects, const bench::Facts& facts) {
    std::vector<Timing> timings;
    for (const auto& subject : subjects) timings.push_back({&subject, batchOf(subject), {}});
    std::minstd_rand random;
    for (int round = 0; round < ROUNDS; ++round) {
      std::shuffle(timings.begin(), timings.end(), random);
      for (auto& timing : timings) {
        timing.seconds.push_back(perExecution(*timing.subject, timing.batch));
      }
    }
    nlohmann::json report{{"context", facts}, {"benchmarks", nlohmann::json::array()}};
    for (const auto& timing : timings) {
      report["benchmarks"].push_back({{"run_name", timing.subject->name + "/manual_time"},
                                      {"aggregate_name", "median"},
                                      {"real_time", median(timing.seconds) * 1e9},
                                      {"time_unit", "ns"}});
    }
    std::ofstream(argv[3]) << report.dump(2) << '\n';
  });
  return 0;
} catch (const std::exception& failure) {
  std::fprintf(stderr, "store_bench: %s\n", failure.what());
  return 1;
}
