// Changes that go back unless they are confirmed, as a file holds them.
#pragma once

#include <cstdint>
#include <string>

namespace agent {

struct Unconfirmed {
  int64_t until = 0;     ///< in milliseconds since 1970, UTC
  uint32_t seconds = 0;  ///< that there were to confirm them
  std::string before;    ///< the settings before, as a settings file has them
  std::string after;     ///< and with the changes

  bool operator==(const Unconfirmed&) const = default;
};

/// The bytes of the file. Their end is a checksum of all before it.
std::string encode(const Unconfirmed& changes);

/// Throws std::runtime_error, with the reason, if that is nothing of the kind.
Unconfirmed decodeUnconfirmed(std::string file);

/// Upper limit of such a file, in bytes: two texts of settings and what is around them.
inline constexpr size_t MAX_UNCONFIRMED_SIZE = 33 * 1024 * 1024;

}  // namespace agent
