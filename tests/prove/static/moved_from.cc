#include <string>
#include <utility>

size_t planted(std::string text) {
  const std::string other = std::move(text);
  return other.size() + text.size();
}
