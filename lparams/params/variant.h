// Named values of an enumeration.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace LPARAMS::Server {

/// One named value. A variant table is an array of them, closed by a record whose name is null.
/// Searches run from the front and take the first match; tables are constant and never owned.
struct Variant {
  int32_t value;
  const char* name;
};

/// The first record with the value, or null.
constexpr const Variant* findVariant(const Variant* table, int32_t value) {
  while (table->name != nullptr && table->value != value) ++table;
  return table->name != nullptr ? table : nullptr;
}

/// The letters A to Z in lower case, whatever the locale.
constexpr char lowerCase(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

/// Equality of two names without regard to ASCII case.
inline bool equalNames(std::string_view a, std::string_view b) {
  const auto equalLetters = [](char x, char y) { return lowerCase(x) == lowerCase(y); };
  return a.size() == b.size() &&
         (a == b || std::equal(a.begin(), a.end(), b.begin(), equalLetters));
}

/// True for a table that can be searched without surprises: closed by a null name, no value twice,
/// no name twice. For checks while the catalogue is compiled.
template <size_t N>
constexpr bool isVariantTable(const Variant (&table)[N]) {
  for (size_t i = 0; i + 1 < N; ++i) {
    if (table[i].name == nullptr) return false;
    for (size_t j = 0; j < i; ++j) {
      if (table[i].value == table[j].value) return false;
      if (std::string_view(table[i].name) == table[j].name) return false;
    }
  }
  return table[N - 1].name == nullptr && table[N - 1].value == 0;
}

}  // namespace LPARAMS::Server
