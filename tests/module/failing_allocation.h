// Allocations that fail: this process exports the operators new in front of the C++ library's.
#pragma once

namespace host {

/// Of the allocations from here on, the `number`th (from 1) throws std::bad_alloc. 0 takes that
/// back.
void failAllocation(int number);

/// Whether the allocation that was to fail has come.
bool allocationHasFailed();

/// While it lives no allocation of its thread fails or counts: for what this process does itself in
/// the middle of a call of the module.
class OwnAllocations {
 public:
  OwnAllocations();
  ~OwnAllocations();

  OwnAllocations(const OwnAllocations&) = delete;
  OwnAllocations& operator=(const OwnAllocations&) = delete;

 private:
  const int left_;
};

}  // namespace host
