// Named values of an enumeration.
#pragma once

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
const Variant* findVariant(const Variant* table, int32_t value);

/// Equality of whole names without regard to ASCII case, whatever the locale.
bool equalNames(std::string_view left, std::string_view right);

/// True for a table that can be searched without surprises: closed by a null name, no value twice,
/// no name twice. For static assertions.
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
