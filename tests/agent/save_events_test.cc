#include "agent/save_events.h"

#include <gtest/gtest.h>

#include <new>
#include <string>

#include "agent/events/events.h"
#include "tests/agent/state/kept_settings.h"
#include "tests/module/failing_allocation.h"

namespace agent {
namespace {

using agent_testing::exampleSettings;
using agent_testing::SETTINGS;

TEST(SaveEvents, AreToldOrLoseWhoWatchesWhateverMemoryThereIs) {
  const agent_testing::ScratchDirectory directory;
  directory.write(SETTINGS, exampleSettings());
  agent_testing::KeptSettings settings(directory);
  Events events;
  const SaveEvents saveEvents(settings.keeper(), events);
  int told = 0;
  int lost = 0;
  const auto ticket = events.watch(
      {.tell = [&](const std::string& /*frame*/) { ++told; }, .lose = [&] { ++lost; }}, [] {});
  directory.write(SETTINGS, exampleSettings(501));  // an edit, for a reason that is told
  EXPECT_NE(settings.keeper().save(false), "");     // keeps a copy of it, once
  int withoutMemory = 0;
  for (int number = 1;; ++number) {
    told = lost = 0;
    bool ended = true;
    host::failAllocation(number);
    try {
      (void)settings.keeper().save(false);
    } catch (const std::bad_alloc&) {
      ended = false;
    }
    const bool failed = host::allocationHasFailed();
    host::failAllocation(0);
    if (ended) {
      EXPECT_EQ(told + lost, 1) << "after allocation " << number;
    }
    withoutMemory += lost;
    if (!failed) break;
  }
  EXPECT_EQ(told, 1);
  EXPECT_GT(withoutMemory, 1) << "to make the notice, and to encode it";
  events.unwatch(ticket);
}

}  // namespace
}  // namespace agent
