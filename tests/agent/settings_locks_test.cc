#include "agent/settings_locks.h"

#include <gmock/gmock.h>
#include <pthread.h>

#include <chrono>
#include <future>
#include <string>
#include <utility>
#include <vector>

#include "lparams/module_objects.h"
#include "tests/module/lock_calls.h"
#include "tests/support/mutex_of.h"

namespace agent {
namespace {

using namespace std::chrono_literals;
using basekit::ObjectLevelLockable;

struct NamedLock {
  std::string name;
  ObjectLevelLockable* lock;
};

/// Every lock of the module but those of the user list's entries.
std::vector<NamedLock> moduleLocks() {
  std::vector<NamedLock> locks = {{"the module's", &LPARAMS::Server::g_ioLock},
                                  {"the root's", LPARAMS::server}};
  for (LPARAMS::Server::ParamGroup* group : LPARAMS::server->groups()) {
    locks.push_back({group->name, group});
    for (LPARAMS::Server::Param* param : group->fileParams) {
      locks.push_back({std::string(group->name) + "." + param->name, param});
    }
  }
  return locks;
}

TEST(SettingsLocks, EachIsTaken) {
  host::recordTakings();
  passEveryLock(*LPARAMS::server);
  const auto taken = host::locksTaken();
  ASSERT_GT(moduleLocks().size(), 60u);
  for (const auto& [name, lock] : moduleLocks()) {
    EXPECT_THAT(taken, testing::Contains(lock)) << name;
  }
}

TEST(SettingsLocks, OneThatIsStuckIsWaitedForAndNoOtherIsHeldMeanwhile) {
  for (const auto& [name, stuck] : moduleLocks()) {
    std::future<void> looked;
    {
      const ObjectLevelLockable::Lock held(*stuck);
      looked = std::async(std::launch::async, [] { passEveryLock(*LPARAMS::server); });
      EXPECT_EQ(looked.wait_for(5ms), std::future_status::timeout) << name;
      for (const NamedLock& other : moduleLocks()) {
        if (other.lock == stuck) continue;
        // A look that has not come so far holds one for a moment.
        pthread_mutex_t& mutex = testing_support::mutexOf(*other.lock);
        while (pthread_mutex_trylock(&mutex) != 0) continue;
        (void)pthread_mutex_unlock(&mutex);
      }
    }
    looked.get();
  }
}

}  // namespace
}  // namespace agent
