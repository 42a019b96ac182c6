// What is wrong with a request, as the reply says it.
#pragma once

#include <cstddef>
#include <string>

namespace editing {

/// Gathers mistakes, each one line of text. Of very many only the first are told.
class Mistakes {
 public:
  void add(const std::string& mistake) {
    if (++count_ > MAX_TOLD) return;
    if (!text_.empty()) text_ += '\n';
    text_ += mistake;
  }

  bool empty() const { return count_ == 0; }

  /// The lines, without a newline at the end.
  std::string text() const {
    if (count_ <= MAX_TOLD) return text_;
    return text_ + "\nand " + std::to_string(count_ - MAX_TOLD) + " more mistakes";
  }

 private:
  static constexpr size_t MAX_TOLD = 100;

  size_t count_ = 0;
  std::string text_;
};

}  // namespace editing
