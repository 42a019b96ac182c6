// The observers of a group, around the commands that write it.
#include <gmock/gmock.h>

#include <list>
#include <vector>

#include "lparams/params/numeric_param.h"
#include "tests/catalogue/expected_groups.h"
#include "tests/module/loaded_module.h"
#include "tests/module/lock_calls.h"
#include "tests/module/scripted_param.h"
#include "tests/support/lock_probe.h"
#include "tests/support/readable_bytes.h"

using LPARAMS::Server::expectedGroup;
using LPARAMS::Server::initiallyBut;
using testing::ElementsAre;
using testing::IsEmpty;
using testing_support::isLocked;
using testing_support::unhex;

namespace host {
namespace {

// Observers are plain functions, so what they see and use is kept here.
std::vector<std::string> seen;
LPARAMS::Server::Server_t* rootOfObservers = nullptr;

void first(int event) { seen.push_back("first " + std::to_string(event)); }
void second(int event) { seen.push_back("second " + std::to_string(event)); }

class Observers : public ModuleTest {
 protected:
  Observers() {
    seen.clear();
    rootOfObservers = &root();
  }

  CommandResult writeAdmin(const std::string& record) {
    return execute(WRITE_GROUP, framed("ADMIN", record));
  }

  const std::string record = execute(READ_GROUP, framed("ADMIN")).output;
};

TEST_F(Observers, SeeTheBeginAndTheEndOfAWriteInOrder) {
  root().ADMIN->observers = {first, second};
  EXPECT_EQ(writeAdmin(record).result, 1);
  EXPECT_THAT(seen, ElementsAre("first 1", "second 1", "first 0", "second 0"));
}

TEST_F(Observers, SeeTheOldValuesAtTheBeginAndTheNewOnesAtTheEnd) {
  root().ADMIN->observers = {[](int event) {
    const auto value = rootOfObservers->ADMIN->SESSION_EXPTIME.value;
    seen.push_back(std::to_string(event) + ": " + std::to_string(value));
  }};
  EXPECT_EQ(writeAdmin(expectedGroup("ADMIN").record(
                           initiallyBut({{"SESSION_EXPTIME", {"", "20 00 00 00"}}})))
                .result,
            1);
  EXPECT_THAT(seen, ElementsAre("1: 10", "0: 32"));
}

TEST_F(Observers, SeeOnlyTheirOwnGroup) {
  root().ADMIN->observers = {first};
  root().LOG->observers = {second};
  EXPECT_EQ(execute(WRITE_GROUP, framed("LOG", execute(READ_GROUP, framed("LOG")).output)).result,
            1);
  EXPECT_THAT(seen, ElementsAre("second 1", "second 0"));
}

TEST_F(Observers, OfTheUserListAreCalledToo) {
  root().USERS->observers = {first};
  EXPECT_EQ(execute(WRITE_GROUP, framed("USERS", unhex("00 00 00 00"))).result, 1);
  EXPECT_THAT(seen, ElementsAre("first 1", "first 0"));
}

TEST_F(Observers, OfTheRootAreNeverCalled) {
  root().observers = {first};
  EXPECT_EQ(writeAdmin(record).result, 1);
  EXPECT_THAT(seen, IsEmpty());
}

TEST_F(Observers, AreNotCalledByWhatIsNoWrite) {
  root().ADMIN->observers = {first};
  (void)execute(READ_GROUP, framed("ADMIN"));
  (void)execute(SAVE);
  (void)execute(WRITE_GROUP, framed("NONE", record));
  (void)execute(WRITE_GROUP, "abc");
  platform().authorised = false;
  (void)writeAdmin(record);
  EXPECT_THAT(seen, IsEmpty());
}

TEST_F(Observers, SeeABeginWithoutAnEndWhenTheInputBreaksOff) {
  root().ADMIN->observers = {first, second};
  EXPECT_EQ(writeAdmin(record.substr(0, 5)).thrown, "CommandStreamError");
  EXPECT_THAT(seen, ElementsAre("first 1", "second 1"));
}

TEST_F(Observers, SeeABeginWithoutAnEndWhenAMemberFails) {
  ScriptedParam last(*root().ADMIN);
  last.onRead = [] { return false; };
  root().ADMIN->observers = {first, second};
  EXPECT_EQ(writeAdmin(record).result, 0);
  EXPECT_THAT(seen, ElementsAre("first 1", "second 1"));
}

TEST_F(Observers, MayUseTheSettingsOnTheSameThread) {
  root().ADMIN->observers = {[](int event) {
    std::string error;
    const bool done = execute(READ_GROUP, framed("ADMIN")).result == 1 &&
                      rootOfObservers->save(&error) && !rootOfObservers->isChanged();
    seen.push_back(std::to_string(event) + (done ? " done" : " failed"));
  }};
  EXPECT_EQ(writeAdmin(record).result, 1);
  EXPECT_THAT(seen, ElementsAre("1 done", "0 done"));
}

TEST_F(Observers, ThatAreAddedByAnObserverAreCalledInTheSameRound) {
  root().ADMIN->observers = {[](int event) {
    first(event);
    auto& observers = rootOfObservers->ADMIN->observers;
    if (observers.size() < 20) observers.push_back(second);  // grows the vector under the caller
  }};
  EXPECT_EQ(writeAdmin(record).result, 1);
  EXPECT_THAT(seen, ElementsAre("first 1", "second 1", "first 0", "second 0", "second 0"));
}

// An agent may append to the root what is no group.

/// In memory it is laid out like a group, so one that is taken for a group has observers to call.
class PlainMember : public LPARAMS::Server::Param {
 public:
  explicit PlainMember(LPARAMS::Server::ParamGroup& group) : Param("PLAIN") { group.add(*this); }

  int getTypeId() const override { return LPARAMS::Server::TYPE_UINT; }
  bool write(LPARAMS::Server::CommandStreamOut& out) override {
    put(out, value);
    return answer;
  }
  bool read(LPARAMS::Server::CommandStreamIn& in) override {
    take(in, value);
    return answer;
  }

  std::list<Param*> inPlaceOfFileParams;
  std::list<Param*> inPlaceOfWireParams;
  std::vector<void (*)(int)> inPlaceOfObservers{first, second};
  unsigned value = 7;
  bool answer = true;
};

TEST_F(Observers, OfAPlainMemberOfTheRootDoNotExist) {
  PlainMember plain(root());
  const CommandResult reply = execute(READ_GROUP, framed("PLAIN"));
  EXPECT_EQ(reply.result, 1);
  EXPECT_EQ(reply.output, unhex("07 00 00 00"));

  EXPECT_EQ(execute(WRITE_GROUP, framed("PLAIN", unhex("09 00 00 00"))).result, 1);
  EXPECT_EQ(plain.value, 9u);
  EXPECT_EQ(execute(WRITE_GROUP, framed("PLAIN", unhex("01 00 00"))).thrown, "CommandStreamError");
  EXPECT_EQ(plain.value, 9u);
  plain.answer = false;
  EXPECT_EQ(execute(READ_GROUP, framed("PLAIN")).result, 0);
  EXPECT_EQ(execute(WRITE_GROUP, framed("PLAIN", unhex("01 00 00 00"))).result, 0);
  EXPECT_THAT(seen, IsEmpty());
}

TEST_F(Observers, OfAGroupThatTheAgentAppendsAreCalled) {
  LPARAMS::Server::ParamGroup group("AGENT");
  LPARAMS::Server::UIntParam member(group, "NUMBER", LPARAMS::Server::Default{1u},
                                    LPARAMS::Server::Range{0u, 9u});
  group.observers = {first};
  root().add(group);
  EXPECT_EQ(execute(WRITE_GROUP, framed("AGENT", unhex("02 00 00 00"))).result, 1);
  EXPECT_EQ(member.value, 2u);
  EXPECT_THAT(seen, ElementsAre("first 1", "first 0"));
}

TEST_F(Observers, RunUnderTheModulesLockAndNoOther) {
  recordLocks();
  module.reload();
  rootOfObservers = &root();
  root().ADMIN->observers = {[](int event) {
    auto locks = locksMade();
    std::erase_if(locks, [](auto* lock) { return !isLocked(*lock); });
    const bool held = locks == std::vector{locksMade().front()};
    seen.push_back(std::to_string(event) + (held ? " held alone" : " otherwise"));
  }};
  EXPECT_EQ(writeAdmin(record).result, 1);
  EXPECT_THAT(seen, ElementsAre("1 held alone", "0 held alone"));
}

}  // namespace
}  // namespace host
