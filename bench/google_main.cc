// The native front end: Google Benchmark.
//
// Usage: store_bench MODULE DIRECTORY [options of Google Benchmark]
#include <benchmark/benchmark.h>

#include <cstdio>
#include <exception>

#include "bench/subject.h"

namespace {

void registerSubject(const bench::Subject& subject) {
  const int batch = bench::batchOf(subject);
  benchmark::RegisterBenchmark(subject.name.c_str(), [subject, batch](benchmark::State& state) {
    while (state.KeepRunningBatch(batch)) {
      state.SetIterationTime(subject.measure(batch));
    }
  })->UseManualTime();
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc < 3) return 2;
  const std::string module = argv[1];
  const std::string directory = argv[2];
  argv[2] = argv[0];
  int rest = argc - 2;
  bench::runAll(module, directory, [&](const bench::Subjects& subjects, const bench::Facts& facts) {
    for (const auto& [name, value] : facts) {
      benchmark::AddCustomContext(name, std::to_string(value));
    }
    for (const bench::Subject& subject : subjects) registerSubject(subject);
    benchmark::Initialize(&rest, argv + 2);
    benchmark::RunSpecifiedBenchmarks();
  });
  return 0;
} catch (const std::exception& failure) {
  std::fprintf(stderr, "store_bench: %s\n", failure.what());
  return 1;
}
