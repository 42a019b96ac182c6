// A program that is killed in its second function; the third is never called. The control of the
// coverage line: what has run up to the kill counts, and only what never runs is told.

#include <csignal>

namespace {

int doubled(int value) { return 2 * value; }

int killed(int value) {
  const int result = doubled(value);
  (void)raise(SIGKILL);
  return result;
}

int tripled(int value) {
  return 3 * value;  // never run
}

}  // namespace

int main(int count, char**) {
  if (count > 1) return tripled(count);
  return killed(count);
}
