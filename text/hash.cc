#include "text/hash.h"

// Header only, so that it serves every width.
#define XXH_INLINE_ALL
#include <xxhash.h>

#include <array>
#include <cstdio>

namespace text {

std::string hashOf(std::string_view bytes) {
  const XXH128_hash_t hash = XXH3_128bits(bytes.data(), bytes.size());
  std::array<char, 33> digits{};
  (void)std::snprintf(digits.data(), digits.size(), "%016llx%016llx",
                      static_cast<unsigned long long>(hash.high64),
                      static_cast<unsigned long long>(hash.low64));
  return digits.data();
}

}  // namespace text
