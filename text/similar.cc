#include "text/similar.h"

#include <algorithm>

namespace text {
namespace {

constexpr size_t LONGEST = 128;  // bytes; the work grows with the square

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

}  // namespace

size_t distance(std::string_view a, std::string_view b) {
  std::vector<size_t> beforeLast(b.size() + 1);
  std::vector<size_t> last(b.size() + 1);
  std::vector<size_t> row(b.size() + 1);
  for (size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (size_t i = 1; i <= a.size(); ++i) {
    beforeLast.swap(last);
    last.swap(row);
    row[0] = i;
    for (size_t j = 1; j <= b.size(); ++j) {
      const size_t replaced = last[j - 1] + (lower(a[i - 1]) == lower(b[j - 1]) ? 0 : 1);
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, replaced});
      if (i > 1 && j > 1 && lower(a[i - 1]) == lower(b[j - 2]) &&
          lower(a[i - 2]) == lower(b[j - 1])) {
        row[j] = std::min(row[j], beforeLast[j - 2] + 1);
      }
    }
  }
  return row[b.size()];
}

std::string similar(std::string_view text, const std::vector<std::string>& candidates) {
  if (text.size() > LONGEST) return {};
  size_t best = text.size() / 4 + 1;
  std::string found;
  for (const std::string& candidate : candidates) {
    const size_t difference =
        std::max(text.size(), candidate.size()) - std::min(text.size(), candidate.size());
    if (difference >= best) continue;
    const size_t mistakes = distance(text, candidate);
    if (mistakes >= best) continue;
    best = mistakes;
    found = candidate;
  }
  return found;
}

}  // namespace text
