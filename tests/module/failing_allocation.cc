#include "tests/module/failing_allocation.h"

#include <cstdlib>
#include <new>
#include <utility>

namespace host {
namespace {

constinit thread_local int allocationsLeft = 0;

}  // namespace

void failAllocation(int number) { allocationsLeft = number; }
bool allocationHasFailed() { return allocationsLeft == 0; }

OwnAllocations::OwnAllocations() : left_(std::exchange(allocationsLeft, 0)) {}
OwnAllocations::~OwnAllocations() { allocationsLeft = left_; }

}  // namespace host

#pragma GCC visibility push(default)

void* operator new(size_t size) {
  if (host::allocationsLeft > 0 && --host::allocationsLeft == 0) throw std::bad_alloc();
  void* memory = std::malloc(size > 0 ? size : 1);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void* operator new[](size_t size) { return operator new(size); }

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, size_t /*size*/) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory, size_t /*size*/) noexcept { std::free(memory); }

#pragma GCC visibility pop
