// What loading and unloading the module does to the process around it.
#include <dlfcn.h>
#include <gmock/gmock.h>

#include "tests/catalogue/expected_groups.h"
#include "tests/module/call_log.h"
#include "tests/module/loaded_module.h"
#include "tests/module/lock_calls.h"
#include "tests/support/readable_bytes.h"

using LPARAMS::Server::expectedGroup;
using LPARAMS::Server::initially;
using testing::ElementsAre;
using testing_support::unhex;

namespace host {
namespace {

bool isMapped() { return readFile("/proc/self/maps").find("lparams_server") != std::string::npos; }

bool isResident() {
  void* handle = dlopen(MODULE_FILE.c_str(), RTLD_NOW | RTLD_NOLOAD);
  if (handle != nullptr) dlclose(handle);
  return handle != nullptr;
}

/// Like the fixture, but the test decides when the module is loaded.
class StartUp : public testing::Test {
 protected:
  StartUp() { resetPlatform(directory.path); }
  const TempDirectory directory;
};

TEST_F(StartUp, RegistersOneListenerAndAsksForNothingElse) {
  std::optional<LoadedModule> module;
  EXPECT_THAT(callsDuring([&] { module.emplace(); }),
              ElementsAre("AddCommandListener of module 13"));
}

TEST_F(StartUp, TheListenerHasTheModulesIdentifierBeforeTheRootIsBuilt) {
  static std::vector<int> ids;
  ids.clear();
  whenALockIsMade([] { ids.push_back(moduleIdInPlace()); });
  const LoadedModule module;
  whenALockIsMade(nullptr);
  ASSERT_GT(ids.size(), 80u);
  // The first lock is the module's own; the listener is not there yet.
  EXPECT_EQ(ids.front(), 0);
  ids.erase(ids.begin());
  EXPECT_THAT(ids, testing::Each(13));
}

TEST_F(StartUp, TheRootIsCompleteWhenTheListenerIsRegistered) {
  CommandResult reply;
  platform().onAdd = [&](CommandListener& listener) {
    BridgeSession session;
    reply.result = listener.ExecCommand(session, READ_GROUP, framed("ADMIN"), reply.output);
  };
  const LoadedModule module;
  EXPECT_EQ(reply.result, 1);
  EXPECT_EQ(reply.output, expectedGroup("ADMIN").record(initially));
}

TEST_F(StartUp, TheExportedPointerPointsAtTheListenersRoot) {
  const LoadedModule module;
  module.root().ADMIN->SESSION_EXPTIME.value = 0x01020304;
  EXPECT_EQ(execute(READ_GROUP, framed("ADMIN")).output.substr(0, 4), unhex("04 03 02 01"));
}

TEST_F(StartUp, TheListenerIsTakenBackBeforeAnythingIsDestroyed) {
  recordLocks();
  LoadedModule module;
  CommandResult reply;
  size_t destroyed = 1;
  platform().onDel = [&](CommandListener& listener) {
    BridgeSession session;
    destroyed = locksDestroyed().size();
    reply.result = listener.ExecCommand(session, READ_GROUP, framed("IKE"), reply.output);
  };
  EXPECT_THAT(callsDuring([&] { module.unload(); }),
              ElementsAre("DelCommandListener of module 13"));
  EXPECT_EQ(destroyed, 0u);
  EXPECT_EQ(reply.result, 1);
}

TEST_F(StartUp, UnloadingDestroysEverythingInReverseOrderOfConstruction) {
  recordLocks();
  LoadedModule module;
  auto made = locksMade();
  ASSERT_GT(made.size(), 80u);  // the I/O lock, the root, six groups and their parameters
  module.unload();
  std::reverse(made.begin(), made.end());
  EXPECT_EQ(locksDestroyed(), made);
}

TEST_F(StartUp, UnloadingDestroysTheUsersToo) {
  recordLocks();
  LoadedModule module;
  (void)module.addUser();
  (void)module.addUser();
  module.unload();
  EXPECT_THAT(locksDestroyed(), testing::UnorderedElementsAreArray(locksMade()));
}

TEST_F(StartUp, UnloadingLeavesNothingOfTheModuleInTheProcess) {
  EXPECT_FALSE(isResident());
  LoadedModule module;
  EXPECT_TRUE(isResident());
  EXPECT_TRUE(isMapped());
  module.unload();
  EXPECT_FALSE(isResident());
  EXPECT_FALSE(isMapped());
}

TEST_F(StartUp, AModuleThatIsLoadedAgainStartsAfresh) {
  LoadedModule module;
  module.root().IKE->IKE_PORT.value = 1234;
  module.reload();
  EXPECT_EQ(module.root().IKE->IKE_PORT.value, 500);
}

TEST_F(StartUp, TheSessionCallbacksDoNothing) {
  const LoadedModule module;
  BridgeSession session;
  CommandListener& listener = *platform().listener;
  EXPECT_THAT(callsDuring([&] {
                listener.OnOpenFirstSession();
                listener.OnOpenSession(&session);
                listener.OnCloseSession(&session);
                listener.OnCloseLastSessionWithUser(&session);
                listener.OnCloseLastSession();
              }),
              testing::IsEmpty());
}

}  // namespace
}  // namespace host
