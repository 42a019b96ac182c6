// Which locks each operation holds while it is at a member of a group: the module's own first, then
// the root's, then the group's.
#include <gmock/gmock.h>

#include <algorithm>
#include <optional>

#include "tests/module/loaded_module.h"
#include "tests/module/lock_calls.h"
#include "tests/module/scripted_param.h"
#include "tests/support/lock_probe.h"
#include "tests/support/recording_load_log.h"

using testing::ElementsAre;

namespace host {
namespace {

class LockOrder : public ModuleTest {
 protected:
  /// Loads the module anew with a member in ADMIN that looks at the locks.
  LockOrder() {
    recordLocks();
    module.reload();
    member.emplace(*root().ADMIN);
    member->onSave = [this](std::ostream&) { return look(); };
    member->onLoad = [this](std::istream&) { return look(); };
    member->onWrite = [this] { return look(); };
    member->onRead = [this] { return look(); };
  }

  /// Writes down the names of the locks that are held, in the order in which they were made.
  bool look() {
    held.clear();
    for (auto* lock : locksMade()) {
      if (testing_support::isLocked(*lock)) held.push_back(nameOf(lock));
    }
    return true;
  }

  std::string nameOf(const basekit::ObjectLevelLockable* lock) const {
    if (lock == locksMade().front()) return "g_ioLock";
    if (lock == &root()) return "ROOT";
    for (const LPARAMS::Server::Param* group : root().fileParams) {
      if (lock == group) return group->name;
    }
    return "a parameter";
  }

  std::optional<ScriptedParam> member;
  std::vector<std::string> held;
};

TEST_F(LockOrder, ACommandHoldsTheModulesAndTheGroups) {
  (void)execute(READ_GROUP, framed("ADMIN"));
  EXPECT_THAT(held, ElementsAre("g_ioLock", "ADMIN"));
  held.clear();
  (void)execute(WRITE_GROUP, framed("ADMIN", execute(READ_GROUP, framed("ADMIN")).output));
  EXPECT_THAT(held, ElementsAre("g_ioLock", "ADMIN"));
}

TEST_F(LockOrder, ASaveHoldsTheModulesTheRootsAndTheGroups) {
  EXPECT_TRUE(root().save(nullptr));
  EXPECT_THAT(held, ElementsAre("g_ioLock", "ROOT", "ADMIN"));
}

TEST_F(LockOrder, ALoadHoldsTheModulesTheRootsAndTheGroups) {
  writeFile(settingsPath, "/ROOT=\n/ADMIN=\nSCRIPTED=\nend=\nend=\n");
  member->onSave = nullptr;  // the snapshot after the load
  testing_support::RecordingLoadLog log;
  EXPECT_TRUE(root().load(&log));
  EXPECT_THAT(held, ElementsAre("g_ioLock", "ROOT", "ADMIN"));
}

TEST_F(LockOrder, TheQuestionForChangesHoldsTheRootsAndTheGroupsOnly) {
  EXPECT_TRUE(root().save(nullptr));
  EXPECT_FALSE(root().isChanged());
  EXPECT_THAT(held, ElementsAre("ROOT", "ADMIN"));
}

TEST_F(LockOrder, TheQuestionForChangesTakesTheRootsForTheSizeTheTextAndTheComparison) {
  const auto timesTaken = [&] {
    recordTakings();
    (void)root().isChanged();
    const auto taken = locksTaken();
    return std::ranges::count(taken, &root());
  };
  EXPECT_EQ(timesTaken(), 1) << "without a snapshot there is nothing to compare";
  EXPECT_TRUE(root().save(nullptr));
  EXPECT_EQ(timesTaken(), 3);
}

TEST_F(LockOrder, TheRootsIsHeldForItsTextAndItsSnapshotAndNotForTheFile) {
  platform().onVarDir = [this] { (void)look(); };
  member->onSave = nullptr;
  EXPECT_TRUE(root().save(nullptr));
  EXPECT_THAT(held, ElementsAre("g_ioLock"));
}

TEST_F(LockOrder, TheRootsIsTakenLastForTheSnapshot) {
  member->onSave = nullptr;
  recordTakings();
  EXPECT_TRUE(root().save(nullptr));
  EXPECT_EQ(locksTaken().back(), &root());

  testing_support::RecordingLoadLog log;
  recordTakings();
  EXPECT_TRUE(root().load(&log));
  EXPECT_EQ(locksTaken().back(), &root());

  recordTakings();
  EXPECT_FALSE(root().isChanged());
  EXPECT_EQ(locksTaken().back(), &root());
}

TEST_F(LockOrder, NothingIsHeldAfterwards) {
  (void)execute(READ_GROUP, framed("ADMIN"));
  (void)execute(SAVE);
  (void)root().isChanged();
  (void)look();
  EXPECT_THAT(held, testing::IsEmpty());
}

}  // namespace
}  // namespace host
