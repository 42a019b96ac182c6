// Start-ups in which the locks cannot be made recursive. Nobody is told; the locks are plain ones.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "tests/module/child_process.h"
#include "tests/module/loaded_module.h"
#include "tests/module/lock_calls.h"
#include "tests/module/scripted_document.h"
#include "tests/support/mutex_of.h"
#include "tests/support/recording_load_log.h"

using testing::HasSubstr;
using testing::IsEmpty;

namespace host {
namespace {

/// What the owner of the lock gets when it tries to take it once more.
int resultOfTakingTwice(basekit::ObjectLevelLockable& lock) {
  pthread_mutex_t* mutex = &testing_support::mutexOf(lock);
  EXPECT_EQ(pthread_mutex_lock(mutex), 0);
  const int result = pthread_mutex_trylock(mutex);
  if (result == 0) pthread_mutex_unlock(mutex);
  pthread_mutex_unlock(mutex);
  return result;
}

class MutexAttribute : public ModuleTest {
 protected:
  void reloadWith(AttributeFailure failure) {
    module.unload();
    recordLocks(failure);
    module.reload();
  }
  ~MutexAttribute() override { recordLocks(); }
};

TEST_F(MutexAttribute, MakesEveryLockRecursive) {
  reloadWith(AttributeFailure::None);
  EXPECT_EQ(attributesLeft(), 0);
  for (auto* lock : locksMade()) EXPECT_EQ(resultOfTakingTwice(*lock), 0);
}

TEST_F(MutexAttribute, ThatCannotBeCreatedLeavesTheLocksUninitialised) {
  reloadWith(AttributeFailure::Init);
  EXPECT_THAT(locksMade(), IsEmpty());
  EXPECT_EQ(attributesLeft(), 0);
  EXPECT_EQ(resultOfTakingTwice(root()), EBUSY);
  EXPECT_EQ(resultOfTakingTwice(root().IKE->IKE_PORT), EBUSY);
}

TEST_F(MutexAttribute, ThatCannotBeMadeRecursiveIsDestroyedAndLeavesTheLocksUninitialised) {
  reloadWith(AttributeFailure::SetType);
  EXPECT_THAT(locksMade(), IsEmpty());
  EXPECT_EQ(attributesLeft(), 0);
  EXPECT_EQ(resultOfTakingTwice(root().IKE->IKE_PORT), EBUSY);
}

/// The calls of the agent, each in a process that has plain locks. A call that takes one of them
/// twice waits for itself for ever, and the child's deadline ends it.
class PlainLocks : public MutexAttribute, public testing::WithParamInterface<AttributeFailure> {
 protected:
  void inChild(const std::function<void()>& body) {
    reloadWith(GetParam());
    runInChild(body);
  }

  void load() {
    testing_support::RecordingLoadLog log;
    EXPECT_TRUE(root().load(&log));
    EXPECT_THAT(log.reports, IsEmpty());
  }
};

INSTANTIATE_TEST_SUITE_P(EachFailure, PlainLocks,
                         testing::Values(AttributeFailure::Init, AttributeFailure::SetType),
                         [](const auto& info) {
                           return info.param == AttributeFailure::Init ? "Init" : "SetType";
                         });

TEST_P(PlainLocks, LetALoadOfEveryGroupAndUserEnd) {
  (void)module.addUser();
  (void)module.addUser();
  ASSERT_TRUE(root().save(nullptr));
  inChild([&] {
    load();
    EXPECT_EQ(root().rawSettings, readFile(settingsPath));
    EXPECT_EQ(root().USERS->items.size(), 2u);
  });
}

TEST_P(PlainLocks, LetALoadOfAFileThatBreaksOffEnd) {
  writeFile(settingsPath, "/ROOT=\n/UNKNOWN=\nX=1\nend=\n/IKE=\nIKE_PORT=abc\n");
  inChild([&] {
    testing_support::RecordingLoadLog log;
    EXPECT_FALSE(root().load(&log));
    EXPECT_FALSE(root().isChanged());
  });
}

TEST_P(PlainLocks, LetAnImportEnd) {
  writeFile(directory.path + "localsettings.xml", "any text");
  document() = {};
  document().elements = {
      {"LocalSettings",
       {},
       {},
       {{"Module",
         "USER_ACT_MODULE_ID",
         {},
         {{"Param", "POLICY_SOURCE_TYPE", "1", {}}, {"Param", "POLICY_SOURCE", "server", {}}}}}}};
  inChild([&] {
    load();
    EXPECT_EQ(root().POLICY->PMP_SERVERS.value, "server");
  });
}

TEST_P(PlainLocks, LetTheQuestionForChangesEnd) {
  inChild([&] {
    EXPECT_TRUE(root().isChanged());
    load();
    EXPECT_FALSE(root().isChanged());
    root().IKE->IKE_PORT.value = 501;
    EXPECT_TRUE(root().isChanged());
  });
}

TEST_P(PlainLocks, LetASaveEnd) {
  inChild([&] {
    std::string error;
    EXPECT_TRUE(root().save(&error));
    EXPECT_EQ(error, "file: " + settingsPath);
    EXPECT_TRUE(root().save(&error)) << "nothing has changed";
    (void)module.addUser();
    EXPECT_EQ(execute(SAVE).result, 1);
    EXPECT_THAT(readFile(settingsPath), HasSubstr("/USER="));
  });
}

TEST_P(PlainLocks, LetASaveThatFailsEnd) {
  ASSERT_EQ(mkdir(temporaryPath.c_str(), 0700), 0);
  inChild([&] {
    std::string error;
    EXPECT_FALSE(root().save(&error));
    EXPECT_THAT(error, HasSubstr("write failed: "));
    ASSERT_EQ(rmdir(temporaryPath.c_str()), 0);
    ASSERT_EQ(mkdir(settingsPath.c_str(), 0700), 0);
    ASSERT_EQ(mkdir((settingsPath + "/inner").c_str(), 0700), 0);
    EXPECT_FALSE(root().save(&error));
    EXPECT_THAT(error, HasSubstr("rename failed: "));
  });
}

TEST_P(PlainLocks, LetTheCommandsEnd) {
  inChild([&] {
    for (const char* name : {"IKE", "LOG", "UPDATE", "POLICY", "ADMIN", "USERS"}) {
      const CommandResult reply = execute(READ_GROUP, framed(name));
      EXPECT_EQ(reply.result, 1) << name;
      EXPECT_EQ(execute(WRITE_GROUP, framed(name, reply.output)).result, 1) << name;
      EXPECT_NE(execute(WRITE_GROUP, framed(name, "abc")).thrown, "") << name;
    }
  });
}

}  // namespace
}  // namespace host
