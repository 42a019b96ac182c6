// What each target of the fuzzer defines; one program has one target.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace fuzz {

/// One try with any bytes, beside what the sanitizers see. What is not as it should be ends in
/// found(). The same input gives the same try.
void tryOnce(std::string_view input);

/// Inputs to begin with, made from the catalogue.
std::vector<std::string> seeds();

/// Ends the program, which the fuzzer takes for a find. What was found is said on the standard
/// output: the other stream has what the products log, and is closed.
[[noreturn]] inline void found(const std::string& what) {
  (void)std::printf("FOUND: %s\n", what.c_str());
  (void)std::fflush(stdout);
  std::abort();
}

inline void require(bool holds, const std::string& what) {
  if (!holds) found(what);
}

}  // namespace fuzz
