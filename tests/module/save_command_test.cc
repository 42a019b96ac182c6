// The bridge's save command, and the hook that can take its place.
#include <gmock/gmock.h>

#include "tests/module/call_log.h"
#include "tests/module/loaded_module.h"
#include "tests/module/lock_calls.h"
#include "tests/support/lock_probe.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing_support::isLocked;

namespace host {
namespace {

const std::string AUTHORISATION = "authorise session 0 for module 13 at level 2";

// The hook is a plain function, so what it answers and sees is kept here.
int hookAnswer = 1;
std::vector<std::string> hookCalls;
bool everyLockFree = false;
LPARAMS::Server::Server_t* rootOfHook = nullptr;

int hook(const char* section) {
  hookCalls.emplace_back(section);
  return hookAnswer;
}

class SaveCommand : public ModuleTest {
 protected:
  SaveCommand() {
    hookAnswer = 1;
    hookCalls.clear();
  }
};

TEST_F(SaveCommand, WritesTheFileAndAnswersNothing) {
  const CommandResult reply = execute(SAVE);
  EXPECT_EQ(reply.result, 1);
  EXPECT_EQ(reply.output, "");
  EXPECT_THAT(readFile(settingsPath), HasSubstr("/ROOT=\n"));
}

TEST_F(SaveCommand, IgnoresItsInput) {
  EXPECT_EQ(execute(SAVE, "abc").result, 1);
  EXPECT_TRUE(exists(settingsPath));
}

TEST_F(SaveCommand, IsAuthorisedAtItsOwnLevelBeforeAnythingElse) {
  const auto calls = callsDuring([] { (void)execute(SAVE); });
  ASSERT_FALSE(calls.empty());
  EXPECT_EQ(calls.front(), AUTHORISATION);
  EXPECT_EQ(std::count(calls.begin(), calls.end(), AUTHORISATION), 1);
}

TEST_F(SaveCommand, DoesNothingWhenItIsRefused) {
  platform().authorised = false;
  root().saveHook = hook;
  CommandResult reply;
  EXPECT_THAT(callsDuring([&] { reply = execute(SAVE); }), ElementsAre(AUTHORISATION));
  EXPECT_EQ(reply.result, 0);
  EXPECT_THAT(hookCalls, IsEmpty());
  EXPECT_FALSE(exists(settingsPath));
}

TEST_F(SaveCommand, AnswersZeroWhenTheFileCannotBeWritten) {
  platform().varDir = directory.path + "missing/";
  EXPECT_EQ(execute(SAVE).result, 0);
}

TEST_F(SaveCommand, CallsTheHookInsteadAndReturnsItsResult) {
  root().saveHook = hook;
  for (const int answer : {1, 0, 7, -1}) {
    hookAnswer = answer;
    CommandResult reply;
    EXPECT_THAT(callsDuring([&] { reply = execute(SAVE); }), ElementsAre(AUTHORISATION));
    EXPECT_EQ(reply.result, answer);
    EXPECT_EQ(reply.output, "");
  }
  EXPECT_THAT(hookCalls, testing::AllOf(testing::SizeIs(4), testing::Each("LPARAMS_MODULE")));
  EXPECT_FALSE(exists(settingsPath));
}

TEST_F(SaveCommand, CallsTheHookUnderNoLock) {
  recordLocks();
  module.reload();
  root().saveHook = [](const char*) {
    const auto locks = locksMade();
    everyLockFree = std::none_of(locks.begin(), locks.end(), [](auto* l) { return isLocked(*l); });
    return 1;
  };
  EXPECT_EQ(execute(SAVE).result, 1);
  EXPECT_TRUE(everyLockFree);
}

TEST_F(SaveCommand, LetsTheHookSaveTheFileItself) {
  rootOfHook = &root();
  root().saveHook = [](const char*) { return rootOfHook->save(nullptr) ? 5 : 0; };
  EXPECT_EQ(execute(SAVE).result, 5);
  EXPECT_TRUE(exists(settingsPath));
}

}  // namespace
}  // namespace host
