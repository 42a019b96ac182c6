#include "bench/quiet_processor.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <fstream>
#include <utility>

namespace bench {
namespace {

constexpr double LEARNING_SECONDS = 3;
constexpr int PROBE_FILLS = 160;
/// Against the fastest probe: alone it takes up to 1.08 times as long, with a neighbour 1.3 and
/// more.
constexpr double QUIET_LIMIT = 1.12;
/// So long a subject runs first: the one before has filled the caches and the branch predictors.
constexpr double WARM_UP_SECONDS = 2e-3;
constexpr double PATIENCE_SECONDS = 50e-3;

/// Fills a page in the nearest cache again and again: some ten thousand cycles of stores.
double probe() {
  alignas(64) std::array<char, 4096> page;
  const Stopwatch stopwatch;
  for (int fill = 0; fill < PROBE_FILLS; ++fill) {
    std::memset(page.data(), fill, page.size());
    keep(page.data());
  }
  return stopwatch.seconds();
}

}  // namespace

QuietProcessor::QuietProcessor(std::string file) : file_(std::move(file)) {
  std::ifstream(file_) >> fastest_;
  if (fastest_ <= 0) fastest_ = 1;  // what a failed reading leaves
  for (const Stopwatch stopwatch; stopwatch.seconds() < LEARNING_SECONDS;) (void)isQuiet();
}

QuietProcessor::~QuietProcessor() { std::ofstream(file_) << fastest_; }

QuietProcessor::Timing QuietProcessor::measure(const Subject& subject, int times) {
  for (const Stopwatch warmUp; warmUp.seconds() < WARM_UP_SECONDS;) (void)subject.measure(1);
  // Executed while it waits for quiet: else the neighbour takes its place in the caches.
  for (const Stopwatch stopwatch;;) {
    const bool quietBefore = isQuiet();
    const double seconds = subject.measure(times);
    const bool quiet = isQuiet() && quietBefore;
    if (quiet || stopwatch.seconds() > PATIENCE_SECONDS) return {seconds / times, quiet};
  }
}

bool QuietProcessor::isQuiet() {
  const double seconds = probe();
  fastest_ = std::min(fastest_, seconds);
  return seconds <= fastest_ * QUIET_LIMIT;
}

}  // namespace bench
