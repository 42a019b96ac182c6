#include "agent/state/sealed_text.h"

// Header only, so that it serves every width.
#define XXH_INLINE_ALL
#include <xxhash.h>

#include <array>
#include <cstdio>

namespace agent {
namespace {

constexpr std::string_view SEAL = "#xxh3-128=";

std::string sealOf(std::string_view text) {
  const XXH128_hash_t hash = XXH3_128bits(text.data(), text.size());
  std::array<char, 33> digits{};
  (void)std::snprintf(digits.data(), digits.size(), "%016llx%016llx",
                      static_cast<unsigned long long>(hash.high64),
                      static_cast<unsigned long long>(hash.low64));
  return std::string(SEAL) + digits.data() + "\n";
}

}  // namespace

std::string sealed(std::string_view text) { return std::string(text) + sealOf(text); }

SealedText unsealed(std::string file) {
  const size_t at = file.rfind(SEAL);
  if (at == std::string::npos || (at != 0 && file[at - 1] != '\n')) {
    return {std::move(file), SealedText::Missing};
  }
  const std::string seal = file.substr(at);
  file.resize(at);
  const bool intact = seal == sealOf(file);
  return {std::move(file), intact ? SealedText::Intact : SealedText::Broken};
}

}  // namespace agent
