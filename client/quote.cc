#include "client/quote.h"

#include <algorithm>

namespace client {
namespace {

bool isControl(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte < ' ' || byte == 0x7f;
}

}  // namespace

bool hasControlBytes(std::string_view text) { return std::ranges::any_of(text, isControl); }

}  // namespace client
