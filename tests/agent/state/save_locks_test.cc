// What a save waits for, and what waits for a save.
#include <gmock/gmock.h>

#include <chrono>
#include <future>
#include <thread>

#include "tests/agent/state/kept_settings.h"
#include "tests/agent/state/rename_hook.h"
#include "tests/support/waits_for.h"

namespace agent {
namespace {

using namespace std::chrono_literals;
using agent_testing::exampleSettings;
using agent_testing::HookedRename;
using agent_testing::renameReally;
using agent_testing::SETTINGS;
using agent_testing::SHADOW_COPY;
using testing::Each;
using testing::HasSubstr;
using testing_support::waitsFor;

class SaveLocks : public testing::Test {
 protected:
  void save(bool force = false) { EXPECT_EQ(settings_.keeper().save(force), ""); }

  /// Whether a save waits for the lock behind the shadow copy's rename.
  template <typename Lockable>
  bool waitsBehindTheShadowCopyFor(Lockable& lock) {
    std::promise<void> reached;
    std::promise<void> asked;
    const HookedRename hooked([&](const std::string& from, const std::string& to) {
      const int result = renameReally(from, to);
      if (to == directory_.at(SHADOW_COPY)) {
        reached.set_value();
        asked.get_future().wait();
      }
      return result;
    });
    std::thread saving([&] { save(); });
    reached.get_future().wait();
    return waitsFor(lock, [&] {
      asked.set_value();
      saving.join();
    });
  }

  const agent_testing::ScratchDirectory directory_;
  agent_testing::KeptSettings settings_{directory_};
};

TEST_F(SaveLocks, ItsTextIsOfBetweenTwoWrites) {
  EXPECT_TRUE(waitsFor(settings_.keeper().writeTurn(), [&] { save(); }));
}

TEST_F(SaveLocks, SoIsWhatTheModuleWrites) {
  settings_.setPort(501);
  EXPECT_TRUE(waitsBehindTheShadowCopyFor(settings_.keeper().writeTurn()));
}

TEST_F(SaveLocks, TheSnapshotIsLookedAtUnderTheRootsLock) {
  directory_.remove(SHADOW_COPY);
  EXPECT_TRUE(waitsBehindTheShadowCopyFor(settings_.server()));
}

TEST_F(SaveLocks, TheSnapshotIsForgottenUnderTheRootsLock) {
  directory_.write(SETTINGS, exampleSettings());  // a forced save is to replace it
  LPARAMS::Server::Server_t& server = settings_.server();
  const std::string before = server.rawSettings;
  EXPECT_TRUE(waitsFor(
      server, [&] { save(true); }, [&] { EXPECT_EQ(server.rawSettings, before); }));
}

TEST_F(SaveLocks, WhoAsksForTheTextsOnDiskWaitsForASave) {
  settings_.setPort(501);
  std::future<std::vector<std::string>> texts;
  const HookedRename hooked([&](const std::string& from, const std::string& to) {
    if (to == directory_.at(SETTINGS)) {
      texts = std::async(std::launch::async, [&] { return settings_.keeper().textsOnDisk(); });
      EXPECT_EQ(texts.wait_for(5ms), std::future_status::timeout);
    }
    return renameReally(from, to);
  });
  save();
  EXPECT_THAT(texts.get(), Each(HasSubstr(" IKE_PORT=501\n")));
}

}  // namespace
}  // namespace agent
