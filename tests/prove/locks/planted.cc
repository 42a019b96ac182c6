// Takes two locks, now one first and now the other; and has the C++ library take one of its own,
// which is nobody's business.
#include <istream>
#include <locale>
#include <mutex>

class Planted {
 public:
  void forth() {
    const std::lock_guard lock(first_);
    const std::lock_guard inner(second_);
  }

  void back() {
    const std::lock_guard lock(second_);
    const std::lock_guard inner(first_);
  }

 private:
  std::mutex first_;
  std::mutex second_;
};

int main() {
  Planted planted;
  planted.forth();
  planted.back();
  std::locale::global(std::locale(std::locale(), new std::numpunct<char>));
  const std::istream asks_for_it(nullptr);
}
