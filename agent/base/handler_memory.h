// Memory for the handlers of asynchronous operations.
#pragma once

#include <asio/bind_allocator.hpp>
#include <atomic>
#include <cstddef>
#include <memory>
#include <new>
#include <utility>

namespace agent {

/// Room for one handler at a time, so that its operation can be started without any other memory.
/// What does not fit, or comes while the room is taken, is allocated as usual. Copies share the
/// room. After Asio's example of custom allocation (doc/asio/examples/cpp11_examples.html).
/// Thread-safe.
class HandlerMemory {
 public:
  void* allocate(size_t size) {
    if (size > sizeof room_->bytes || room_->taken.exchange(true)) return ::operator new(size);
    return room_->bytes;
  }

  void deallocate(void* memory) {
    if (memory != room_->bytes) return ::operator delete(memory);
    room_->taken = false;
  }

  bool operator==(const HandlerMemory& other) const = default;

 private:
  struct Room {
    alignas(std::max_align_t) std::byte bytes[256];
    std::atomic<bool> taken = false;
  };

  std::shared_ptr<Room> room_ = std::make_shared<Room>();
};

/// The same as the library asks for it.
template <typename T>
class HandlerAllocator {
 public:
  using value_type = T;

  explicit HandlerAllocator(HandlerMemory memory) : memory_(std::move(memory)) {}
  template <typename Other>
  HandlerAllocator(const HandlerAllocator<Other>& other) : memory_(other.memory_) {}

  T* allocate(size_t count) { return static_cast<T*>(memory_.allocate(count * sizeof(T))); }
  void deallocate(T* memory, size_t /*count*/) { memory_.deallocate(memory); }

  bool operator==(const HandlerAllocator& other) const = default;

 private:
  template <typename>
  friend class HandlerAllocator;

  HandlerMemory memory_;
};

/// The handler, with its operation in that memory.
template <typename Handler>
auto inMemory(const HandlerMemory& memory, Handler handler) {
  return asio::bind_allocator(HandlerAllocator<void>(memory), std::move(handler));
}

}  // namespace agent
