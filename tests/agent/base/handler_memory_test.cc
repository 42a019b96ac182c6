#include "agent/base/handler_memory.h"

#include <gtest/gtest.h>

namespace agent {
namespace {

TEST(HandlerMemory, HasRoomForOneHandlerAtATime) {
  HandlerMemory memory;
  void* const room = memory.allocate(256);
  void* const other = memory.allocate(256);
  EXPECT_NE(other, room);
  memory.deallocate(other);
  void* const third = memory.allocate(1);
  EXPECT_NE(third, room) << "it is taken still";
  memory.deallocate(third);
  memory.deallocate(room);
  EXPECT_EQ(memory.allocate(256), room);
  memory.deallocate(room);
}

TEST(HandlerMemory, TakesWhatDoesNotFitFromElsewhere) {
  HandlerMemory memory;
  void* const room = memory.allocate(1);
  memory.deallocate(room);
  void* const large = memory.allocate(257);
  EXPECT_NE(large, room);
  EXPECT_EQ(memory.allocate(1), room) << "it is free";
  memory.deallocate(large);
  memory.deallocate(room);
}

TEST(HandlerMemory, IsSharedByItsCopies) {
  HandlerMemory memory;
  HandlerMemory copy = memory;
  void* const room = memory.allocate(1);
  copy.deallocate(room);
  EXPECT_EQ(memory.allocate(1), room);
  memory.deallocate(room);
}

}  // namespace
}  // namespace agent
