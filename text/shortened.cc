#include "text/shortened.h"

#include "text/escape.h"

namespace text {

std::string shortened(std::string_view foreign, size_t limit) {
  if (foreign.size() <= limit) return std::string(foreign);
  return std::string(foreign.substr(0, limit)) + "...";
}

std::string quoted(std::string_view foreign) { return inQuotes(shortened(foreign)); }

std::string notShown(std::string_view foreign) {
  return std::string("(").append(std::to_string(foreign.size())).append(" bytes, not shown)");
}

}  // namespace text
