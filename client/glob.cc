#include "client/glob.h"

#include <algorithm>
#include <cstddef>

namespace client {
namespace {

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

}  // namespace

bool matchesGlob(std::string_view glob, std::string_view text) {
  size_t at = 0;
  size_t in = 0;
  size_t star = std::string_view::npos;
  size_t resume = 0;
  while (in < text.size()) {
    if (at < glob.size() && glob[at] == '*') {
      star = at++;
      resume = in;
    } else if (at < glob.size() && (glob[at] == '?' || lower(glob[at]) == lower(text[in]))) {
      ++at;
      ++in;
    } else if (star != std::string_view::npos) {
      at = star + 1;
      in = ++resume;
    } else {
      return false;
    }
  }
  while (at < glob.size() && glob[at] == '*') ++at;
  return at == glob.size();
}

bool matchesName(std::string_view glob, std::string_view fullName) {
  const size_t dot = std::min(fullName.rfind('.'), fullName.size());
  const std::string_view member = fullName.substr(std::min(dot + 1, fullName.size()));
  return matchesGlob(glob, fullName) || matchesGlob(glob, fullName.substr(0, dot)) ||
         (!member.empty() && matchesGlob(glob, member));
}

}  // namespace client
