#include <cstdlib>

int main() {
  int* const number = static_cast<int*>(std::malloc(sizeof(int)));
  if (number == nullptr) return 1;
  *number = 0;
  std::free(number);
  return *number;
}
