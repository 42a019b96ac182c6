// Tries a target without a fuzzer: its seeds, all that was found before, and some thousand
// mutations of these, the same at each run.
//
// Usage: replay FINDS_DIRECTORY
#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>

#include "tests/prove/fuzz/target.h"

namespace {

constexpr std::chrono::milliseconds LONG_ENOUGH{1000};  // for mutations

std::string mutated(std::string text, const std::string& other, std::mt19937& random) {
  const auto below = [&](size_t limit) { return limit == 0 ? 0 : random() % limit; };
  for (size_t times = 1 + below(4); times > 0; --times) {
    const size_t at = below(text.size() + 1);
    switch (below(5)) {
      case 0:
        if (at < text.size()) text[at] = static_cast<char>(text[at] ^ (1 << below(8)));
        break;
      case 1:
        text.erase(at, 1 + below(8));
        break;
      case 2:
        text.insert(at, 1 + below(3), static_cast<char>(random()));
        break;
      case 3:
        text.resize(at);
        break;
      default: {
        const size_t from = below(other.size() + 1);
        text.insert(at, other.substr(from, below(64)));
      }
    }
  }
  return text;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) return 2;
  std::vector<std::string> inputs = fuzz::seeds();
  const size_t seeds = inputs.size();
  if (std::filesystem::is_directory(arguments[1])) {
    for (const auto& entry : std::filesystem::directory_iterator(arguments[1])) {
      std::ifstream file(entry.path(), std::ios::binary);
      inputs.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
  }
  for (const std::string& input : inputs) fuzz::tryOnce(input);
  std::mt19937 random{20261122};
  size_t tries = 0;
  for (const auto end = std::chrono::steady_clock::now() + LONG_ENOUGH;
       std::chrono::steady_clock::now() < end; ++tries) {
    const std::string input = inputs[random() % inputs.size()];
    fuzz::tryOnce(mutated(input, inputs[random() % inputs.size()], random));
  }
  std::cout << seeds << " seeds, " << inputs.size() - seeds << " finds, " << tries
            << " mutations: nothing found\n";
  return seeds == 0 ? 1 : 0;
}
