// Memory for the handlers of asynchronous operations.
#pragma once

#include <asio/bind_allocator.hpp>
#include <atomic>
#include <cstddef>
#include <new>
#include <utility>

namespace agent {

/// Room for one handler at a time, so that its operation can be started without any other memory.
/// What does not fit, or comes while the room is taken, is allocated as usual. After Asio's example
/// of custom allocation (doc/asio/examples/cpp11_examples.html). Thread-safe.
class HandlerMemory {
 public:
  HandlerMemory() = default;
  HandlerMemory(const HandlerMemory&) = delete;
  HandlerMemory& operator=(const HandlerMemory&) = delete;

  void* allocate(size_t size) {
    if (size > sizeof room_ || taken_.exchange(true)) return ::operator new(size);
    return room_;
  }

  void deallocate(void* memory) {
    if (memory != room_) return ::operator delete(memory);
    taken_ = false;
  }

 private:
  alignas(std::max_align_t) std::byte room_[256];
  std::atomic<bool> taken_ = false;
};

/// A HandlerMemory as the library asks for it.
template <typename T>
class HandlerAllocator {
 public:
  using value_type = T;

  explicit HandlerAllocator(HandlerMemory& memory) : memory_(&memory) {}
  template <typename Other>
  HandlerAllocator(const HandlerAllocator<Other>& other) : memory_(other.memory_) {}

  T* allocate(size_t count) { return static_cast<T*>(memory_->allocate(count * sizeof(T))); }
  void deallocate(T* memory, size_t /*count*/) { memory_->deallocate(memory); }

  bool operator==(const HandlerAllocator& other) const { return memory_ == other.memory_; }

 private:
  template <typename>
  friend class HandlerAllocator;

  HandlerMemory* memory_;
};

/// The handler, with its operation in that memory. REQUIRES: the memory outlives the handler, or
/// the handler owns what holds the memory.
template <typename Handler>
auto inMemory(HandlerMemory& memory, Handler handler) {
  return asio::bind_allocator(HandlerAllocator<void>(memory), std::move(handler));
}

}  // namespace agent
