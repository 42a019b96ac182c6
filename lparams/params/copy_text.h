// Copies of short texts.
#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

namespace LPARAMS::Server {

/// Copies the first and the last `Width` bytes of a text, which may overlap. REQUIRES: the text is
/// as long as that, and at most twice.
template <size_t Width>
void copyEnds(char* to, std::string_view text) {
  char first[Width];
  char last[Width];
  std::memcpy(first, text.data(), Width);
  std::memcpy(last, text.data() + text.size() - Width, Width);
  std::memcpy(to, first, Width);
  std::memcpy(to + text.size() - Width, last, Width);
}

/// Copies a text, without a call if it is as short as most names and values are.
inline void copyText(char* to, std::string_view text) {
  if (text.size() > 16) {
    text.copy(to, text.size());
  } else if (text.size() >= 8) {
    copyEnds<8>(to, text);
  } else if (text.size() >= 4) {
    copyEnds<4>(to, text);
  } else {
    for (const char c : text) *to++ = c;
  }
}

}  // namespace LPARAMS::Server
