// Start-ups that fail. An exception that leaves the module's start-up ends the process, after
// everything that was built has been destroyed again. What stays is a bare listener, with the
// module's identifier.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <exception>
#include <stdexcept>

#include "tests/module/child_process.h"
#include "tests/module/failing_allocation.h"
#include "tests/module/loaded_module.h"
#include "tests/module/lock_calls.h"

namespace host {
namespace {

constexpr int LOADED = 10;
constexpr int UNDONE_AND_TERMINATED = 20;
constexpr int TERMINATED_WITH_REMAINS = 30;
constexpr int TERMINATED_WITHOUT_IDENTIFIER = 40;

/// All mutexes but the module's own lock, which is made first and belongs to no object that failed,
/// are destroyed, in reverse order.
bool everythingBuiltIsDestroyed() {
  auto made = locksMade();
  if (made.empty()) return false;
  made.erase(made.begin());
  std::reverse(made.begin(), made.end());
  return locksDestroyed() == made;
}

int resultOfTermination() {
  if (!everythingBuiltIsDestroyed()) return TERMINATED_WITH_REMAINS;
  return moduleIdInPlace() == LPARAMS_MODULE_ID ? UNDONE_AND_TERMINATED
                                                : TERMINATED_WITHOUT_IDENTIFIER;
}

/// Loads the module in this process, which ends with one of the results.
[[noreturn]] void loadAndLeave() noexcept {
  std::set_terminate([] { _exit(resultOfTermination()); });
  // Through a variable, so that the compiler does not count on dlopen never to throw.
  void* (*volatile load)(const char*, int) = dlopen;
  load(MODULE_FILE.c_str(), RTLD_NOW | RTLD_LOCAL);
  _exit(LOADED);
}

class StartUpFailure : public testing::Test {
 protected:
  StartUpFailure() { resetPlatform(directory.path); }

  int loadInChild(const std::function<void()>& prepare) {
    return statusOfChild([&] {
      prepare();
      recordLocks();
      loadAndLeave();
    });
  }

  const TempDirectory directory;
};

TEST_F(StartUpFailure, AListenerThatIsNotTakenEndsTheProcessWithTheRootDestroyed) {
  EXPECT_EQ(loadInChild([] {
              platform().onAdd = [](CommandListener&) { throw std::runtime_error("refused"); };
              platform().onDel = [](CommandListener&) { _exit(1); };
            }),
            UNDONE_AND_TERMINATED);
}

TEST_F(StartUpFailure, AnyAllocationThatFailsEndsTheProcessWithWhatWasBuiltDestroyed) {
  constexpr int MORE_THAN_THE_START_UP_MAKES = 1000;
  int failing = 0;
  int status = UNDONE_AND_TERMINATED;
  while (status == UNDONE_AND_TERMINATED && failing < MORE_THAN_THE_START_UP_MAKES) {
    ++failing;
    status = loadInChild([&] { failAllocation(failing); });
  }
  EXPECT_EQ(status, LOADED) << "allocation " << failing;
  EXPECT_GT(failing, 150) << "each of the lists' entries is an allocation";
}

}  // namespace
}  // namespace host
