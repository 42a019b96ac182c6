// Timings on a machine that is shared.
#pragma once

#include <string>

#include "bench/subject.h"

namespace bench {

/// Times subjects while nobody else uses the processor's core.
///
/// A neighbour on the core, in another virtual machine say, slows locks, stores and allocations by
/// a third and more, and a search through memory not at all: figures of such times do not compare.
/// He comes and goes within milliseconds, so a timing counts if the processor was quiet right
/// before it and right after it, which some microseconds of stores tell. Every subject is
/// treated alike, and what it took itself is not looked at.
///
/// Not thread-safe.
class QuietProcessor {
 public:
  /// Takes some seconds to learn how fast the processor is when it is quiet. What was learnt before
  /// stands in the file, if it exists, and is kept there: the neighbour may stay for a whole run.
  explicit QuietProcessor(std::string file);
  ~QuietProcessor();
  QuietProcessor(const QuietProcessor&) = delete;
  QuietProcessor& operator=(const QuietProcessor&) = delete;

  struct Timing {
    double seconds;  ///< per execution
    bool quiet;      ///< whether nobody disturbed it
  };

  /// Executes the subject that many times, again and again until it was not disturbed, and times
  /// the last of these. Gives up after some milliseconds.
  Timing measure(const Subject& subject, int times);

 private:
  bool isQuiet();

  const std::string file_;
  double fastest_ = 1;  ///< seconds of the fastest probe so far
};

}  // namespace bench
