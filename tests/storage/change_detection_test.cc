// Whether there are changes that are not in the file.
#include <gmock/gmock.h>

#include <new>
#include <ostream>
#include <sstream>
#include <thread>

#include "tests/module/failing_allocation.h"
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

TEST_F(ChangeDetection, SeesAChangeOfAValueThatIsInTheFileOnly) {
  load();
  const std::string ike = execute(READ_GROUP, framed("IKE")).output;
  const std::string update = execute(READ_GROUP, framed("UPDATE")).output;
  auto& time = root().IKE->DPD_IDLE_TIME.value;
  ++time;
  EXPECT_TRUE(root().isChanged());
  --time;
  EXPECT_FALSE(root().isChanged());
  auto& machine = root().UPDATE->MACHINE_ID_FILE.value;
  machine += "x";
  EXPECT_TRUE(root().isChanged());
  EXPECT_EQ(execute(READ_GROUP, framed("IKE")).output, ike);
  EXPECT_EQ(execute(READ_GROUP, framed("UPDATE")).output, update);
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

// A text that cannot be built as a whole.

class BrokenText : public ChangeDetection {
 protected:
  std::string completeText() {
    std::ostringstream os;
    EXPECT_TRUE(root().LPARAMS::Server::ParamGroup::save(os, 0));
    return os.str();
  }

  /// Makes the call with its first allocation failing, then its second, and so on until none fails
  /// any more. Before each the text grows, by more than a former one had room for. Afterwards the
  /// snapshot, and the file if there is one, have to be the text before or the text after.
  void expectWholeTextsWhicheverAllocationFails(const std::function<void()>& call) {
    constexpr int MORE_THAN_ANY_CALL_MAKES = 1000;
    bool failed = true;
    int number = 0;
    while (failed && !HasFailure() && number < MORE_THAN_ANY_CALL_MAKES) {
      SCOPED_TRACE("allocation " + std::to_string(++number));
      const std::string snapshot = root().rawSettings;
      const std::string file = exists(settingsPath) ? readFile(settingsPath) : "";
      root().ADMIN->ADMIN_GROUP.value.append(1000, 'x');
      const std::string after = completeText();

      failAllocation(number);
      try {
        call();
      } catch (const std::bad_alloc&) {
      }
      failed = allocationHasFailed();
      failAllocation(0);
      EXPECT_TRUE(root().rawSettings == snapshot || root().rawSettings == after);
      if (exists(settingsPath)) {
        const std::string now = readFile(settingsPath);
        EXPECT_TRUE(now == file || now == after);
      }
    }
    EXPECT_GT(number, 2);
    EXPECT_FALSE(failed);
    EXPECT_EQ(root().rawSettings, completeText());
  }

  testing_support::RecordingLoadLog log;
};

TEST_F(BrokenText, LeavesTheSnapshotOfTheLastLoad) {
  load();
  const std::string before = root().rawSettings;
  ScriptedParam odd(*root().ADMIN);
  root().IKE->IKE_PORT.value = 501;
  const std::function<bool(std::ostream&)> failures[] = {
      [](std::ostream&) -> bool { throw 5; },
      [](std::ostream&) -> bool { throw std::bad_alloc(); },
      [](std::ostream& os) {
        os.setstate(std::ios::badbit);
        return true;
      },
      [](std::ostream& os) {
        os.setstate(std::ios::failbit);
        return false;
      },
  };
  for (const auto& failure : failures) {
    odd.onSave = failure;
    EXPECT_ANY_THROW((void)root().load(&log));
    EXPECT_ANY_THROW((void)root().save(nullptr));
    EXPECT_ANY_THROW((void)root().isChanged());
    EXPECT_EQ(root().rawSettings, before);
    EXPECT_FALSE(exists(settingsPath));
  }
  odd.onSave = nullptr;
  EXPECT_TRUE(root().isChanged());
}

TEST_F(BrokenText, ForWantOfMemoryNeverBecomesTheSnapshotOfALoad) {
  expectWholeTextsWhicheverAllocationFails([&] { (void)root().load(&log); });
}

TEST_F(BrokenText, ForWantOfMemoryNeverBecomesTheFileOrTheSnapshotOfASave) {
  load();
  expectWholeTextsWhicheverAllocationFails([&] { (void)root().save(nullptr); });
}

TEST_F(BrokenText, ForWantOfMemoryIsNoAnswerToTheQuestionForChanges) {
  load();
  root().IKE->IKE_PORT.value = 501;
  int answers = 0;
  for (int number = 1; answers == 0; ++number) {
    failAllocation(number);
    try {
      EXPECT_TRUE(root().isChanged());
      ++answers;
    } catch (const std::bad_alloc&) {
    }
    failAllocation(0);
  }
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
