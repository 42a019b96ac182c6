// The front end where Google Benchmark is not packaged, in 32 bit: a loop of the same shape that
// writes the same report, as far as it is read.
//
// Usage: store_bench MODULE DIRECTORY QUIET REPORT
#include <algorithm>
#include <cstdio>
#include <exception>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>
#include <utility>
#include <vector>

#include "bench/quiet_processor.h"
#include "bench/subject.h"

int main(int argc, char** argv) try {
  if (argc != 5) return 2;
  bench::runAll(argv[1], argv[2], [&](const bench::Subjects& subjects, const bench::Facts& facts) {
    std::vector<std::pair<const bench::Subject*, int>> batches;
    for (const auto& subject : subjects) batches.emplace_back(&subject, batchOf(subject));
    bench::QuietProcessor processor(argv[3]);
    std::minstd_rand random;
    nlohmann::json report{{"context", facts}, {"benchmarks", nlohmann::json::array()}};
    for (int round = 0; round < bench::ROUNDS; ++round) {
      std::shuffle(batches.begin(), batches.end(), random);
      for (const auto& [subject, batch] : batches) {
        const auto [seconds, quiet] = processor.measure(*subject, batch);
        report["benchmarks"].push_back({{"run_name", subject->name},
                                        {"run_type", "iteration"},
                                        {"real_time", seconds * 1e9},
                                        {"time_unit", "ns"},
                                        {"quiet", quiet ? 1 : 0}});
      }
    }
    std::ofstream(argv[4]) << report.dump(2) << '\n';
  });
  return 0;
} catch (const std::exception& failure) {
  std::fprintf(stderr, "store_bench: %s\n", failure.what());
  return 1;
}
