// The integers and strings that messages consist of.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>

namespace bridge {

static_assert(std::endian::native == std::endian::little, "values are copied in host byte order");

/// Appends an integer.
template <typename T>
requires std::is_integral_v<T> || std::is_enum_v<T>
void put(std::string& out, T value) {
  char bytes[sizeof value];
  std::memcpy(bytes, &value, sizeof value);
  out.append(bytes, sizeof value);
}

/// Appends a string: its length in 4 bytes, then its bytes. REQUIRES: the length fits.
inline void put(std::string& out, std::string_view value) {
  put(out, static_cast<uint32_t>(value.size()));
  out += value;
}

/// Takes an integer off the front of the bytes; false if they are too short.
template <typename T>
requires std::is_integral_v<T>
bool take(std::string_view& bytes, T& value) {
  if (bytes.size() < sizeof value) return false;
  std::memcpy(&value, bytes.data(), sizeof value);
  bytes.remove_prefix(sizeof value);
  return true;
}

/// Takes a string off the front of the bytes; false if they are too short.
inline bool take(std::string_view& bytes, std::string& value) {
  uint32_t length = 0;
  if (!take(bytes, length) || bytes.size() < length) return false;
  value = bytes.substr(0, length);
  bytes.remove_prefix(length);
  return true;
}

}  // namespace bridge
