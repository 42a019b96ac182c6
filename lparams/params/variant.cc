#include "lparams/params/variant.h"

#include <algorithm>

namespace LPARAMS::Server {
namespace {

constexpr char lowerCase(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

}  // namespace

const Variant* findVariant(const Variant* table, int32_t value) {
  for (const Variant* row = table; row->name != nullptr; ++row) {
    if (row->value == value) return row;
  }
  return nullptr;
}

bool equalNames(std::string_view left, std::string_view right) {
  return std::ranges::equal(left, right, {}, lowerCase, lowerCase);
}

}  // namespace LPARAMS::Server
