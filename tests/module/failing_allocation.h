// Allocations that fail: this process exports operator new in front of the C++ library's.
#pragma once

namespace host {

/// Of the allocations from here on, the `number`th (from 1) throws std::bad_alloc. 0 takes that
/// back.
void failAllocation(int number);

}  // namespace host
