// Whether there are changes that are not in the file.
#include <gmock/gmock.h>

#include <thread>

#include "tests/module/loaded_module.h"
#include "tests/module/scripted_param.h"
#include "tests/support/recording_load_log.h"

namespace host {
namespace {

class ChangeDetection : public ModuleTest {
 protected:
  void load() {
    testing_support::RecordingLoadLog log;
    ASSERT_TRUE(root().load(&log));
  }
};

TEST_F(ChangeDetection, SeesAChangeBeforeTheFirstLoad) { EXPECT_TRUE(root().isChanged()); }

TEST_F(ChangeDetection, BuildsNoTextWhenThereIsNothingToCompareItWith) {
  ScriptedParam odd(*root().ADMIN);
  int texts = 0;
  odd.onSave = [&](std::ostream&) { return ++texts > 0; };
  EXPECT_TRUE(root().isChanged());
  EXPECT_EQ(texts, 0);
  load();
  EXPECT_EQ(texts, 1);
  EXPECT_FALSE(root().isChanged());
  EXPECT_EQ(texts, 2);
}

TEST_F(ChangeDetection, SeesNoneAfterALoadWithOrWithoutAFile) {
  load();
  EXPECT_FALSE(root().isChanged());
  ASSERT_FALSE(exists(settingsPath));
  writeFile(settingsPath, "/ROOT=\n/IKE=\nIKE_PORT=0\nend=\nend=\n");
  load();
  EXPECT_EQ(root().IKE->IKE_PORT.value, 1) << "moved to its limit by the load";
  EXPECT_FALSE(root().isChanged());
}

TEST_F(ChangeDetection, SeesNoneAfterASave) {
  ASSERT_TRUE(root().save(nullptr));
  EXPECT_FALSE(root().isChanged());
}

TEST_F(ChangeDetection, SeesChangesThatMakeTheTextLongerShorterOrNeither) {
  load();
  auto& group = root().ADMIN->ADMIN_GROUP.value;
  for (const char* value : {"admins", "admi", "", "Admin"}) {
    group = value;
    EXPECT_TRUE(root().isChanged()) << value;
  }
  group = "admin";
  EXPECT_FALSE(root().isChanged());
}

TEST_F(ChangeDetection, SeesAChangeInEveryGroupAndAFurtherUser) {
  load();
  const auto expectChange = [&](auto& value) {
    const auto before = value;
    value = 1;
    EXPECT_TRUE(root().isChanged());
    value = before;
    EXPECT_FALSE(root().isChanged());
  };
  expectChange(root().IKE->IKE1_STATUS.value);
  expectChange(root().LOG->SYSLOG_ON.value);
  expectChange(root().UPDATE->MODE.value);
  expectChange(root().POLICY->SYSTEM_LSP_SOURCE.value);
  expectChange(root().ADMIN->SESSION_EXPTIME.value);
  (void)module.addUser();
  EXPECT_TRUE(root().isChanged());
}

TEST_F(ChangeDetection, SeesWhatTheBridgeWritesAndTakesBack) {
  load();
  const std::string before = execute(READ_GROUP, framed("ADMIN")).output;
  std::string after = before;
  ++after[0];
  (void)execute(WRITE_GROUP, framed("ADMIN", after));
  EXPECT_TRUE(root().isChanged());
  (void)execute(WRITE_GROUP, framed("ADMIN", before));
  EXPECT_FALSE(root().isChanged());
}

TEST_F(ChangeDetection, ResetsAnEnumerationThatHasNoName) {
  // Kept oddity: asking for changes corrects the value, and then there is none.
  load();
  root().LOG->LOG_LEVEL.value = 7;
  EXPECT_FALSE(root().isChanged());
  EXPECT_EQ(root().LOG->LOG_LEVEL.value, 1);
}

TEST_F(ChangeDetection, DoesNotWaitForARunningCommand) {
  static LPARAMS::Server::Server_t* rootOfObserver;
  static bool changed;
  load();
  rootOfObserver = &root();
  root().ADMIN->observers = {[](int) {
    // The command holds the module's lock; a thread that waits for it would never come back.
    std::thread([] { changed = rootOfObserver->isChanged(); }).join();
  }};
  std::string record = execute(READ_GROUP, framed("ADMIN")).output;
  ++record[0];
  EXPECT_EQ(execute(WRITE_GROUP, framed("ADMIN", record)).result, 1);
  EXPECT_TRUE(changed);
}

}  // namespace
}  // namespace host
