// Start-ups in which the locks cannot be made recursive. Nobody is told; the locks are plain ones.
#include <gmock/gmock.h>

#include <cerrno>

#include "tests/module/loaded_module.h"
#include "tests/module/lock_calls.h"
#include "tests/support/readable_bytes.h"

using testing::IsEmpty;
using testing_support::unhex;

namespace host {
namespace {

/// What the owner of the lock gets when it tries to take it once more.
int resultOfTakingTwice(basekit::ObjectLevelLockable& lock) {
  pthread_mutex_t* mutex = mutexOf(lock);
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

TEST_F(MutexAttribute, ThatFailsStillLetsTheModuleServeOneThread) {
  reloadWith(AttributeFailure::SetType);
  EXPECT_EQ(execute(READ_GROUP, framed("IKE")).result, 1);
  EXPECT_EQ(execute(WRITE_GROUP, framed("USERS", unhex("00 00 00 00"))).result, 1);
}

}  // namespace
}  // namespace host
