// Where things are inside objects and tables of virtual functions.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace testing_support {

/// The first number in a 32-bit build, the second in a 64-bit one.
constexpr size_t bits32or64(size_t in32, size_t in64) { return sizeof(void*) == 4 ? in32 : in64; }

/// The offset of a member inside its object.
template <typename Object, typename Member>
size_t offsetIn(const Object& object, const Member& member) {
  return static_cast<size_t>(reinterpret_cast<const char*>(&member) -
                             reinterpret_cast<const char*>(&object));
}

/// The index of a virtual function in the table of its class. The compiler encodes a pointer to a
/// virtual member as one more than the offset in the table; a destructor takes two slots.
template <typename PointerToMember>
size_t slotOf(PointerToMember member) {
  struct {
    uintptr_t offsetPlusOne;
    ptrdiff_t adjustment;
  } encoded;
  static_assert(sizeof encoded == sizeof member);
  std::memcpy(&encoded, &member, sizeof encoded);
  return (encoded.offsetPlusOne - 1) / sizeof(void*);
}

/// The function in a slot of the object's table.
template <typename Function, typename Object>
Function functionInSlot(const Object& object, size_t slot) {
  const void* const* table = nullptr;
  std::memcpy(&table, &object, sizeof table);
  Function function;
  std::memcpy(&function, &table[slot], sizeof function);
  return function;
}

}  // namespace testing_support
