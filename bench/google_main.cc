// The native front end: Google Benchmark.
//
// Usage: store_bench MODULE DIRECTORY QUIET [options of Google Benchmark]
#include <benchmark/benchmark.h>

#include <cstdio>
#include <exception>

#include "bench/quiet_processor.h"
#include "bench/subject.h"

namespace {

void registerSubject(const bench::Subject& subject, bench::QuietProcessor& processor) {
  const int batch = bench::batchOf(subject);
  const auto run = [subject, batch, &processor](benchmark::State& state) {
    while (state.KeepRunningBatch(batch)) {
      const auto [seconds, quiet] = processor.measure(subject, batch);
      state.SetIterationTime(seconds * batch);
      state.counters["quiet"] = quiet ? 1 : 0;
    }
  };
  benchmark::RegisterBenchmark(subject.name.c_str(), run)
      ->UseManualTime()
      ->Iterations(batch)
      ->Repetitions(bench::ROUNDS);
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc < 4) return 2;
  const std::string module = argv[1];
  const std::string directory = argv[2];
  const std::string quietFile = argv[3];
  argv[3] = argv[0];
  int rest = argc - 3;
  bench::runAll(module, directory, [&](const bench::Subjects& subjects, const bench::Facts& facts) {
    for (const auto& [name, value] : facts) {
      benchmark::AddCustomContext(name, std::to_string(value));
    }
    bench::QuietProcessor processor(quietFile);
    for (const bench::Subject& subject : subjects) registerSubject(subject, processor);
    benchmark::Initialize(&rest, argv + 3);
    benchmark::RunSpecifiedBenchmarks();
  });
  return 0;
} catch (const std::exception& failure) {
  std::fprintf(stderr, "store_bench: %s\n", failure.what());
  return 1;
}
