// The user list on the wire: a count and the entries' records.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "lparams/catalogue/user_list.h"
#include "tests/catalogue/expected_groups.h"
#include "tests/support/lock_probe.h"
#include "tests/support/param_forms.h"
#include "tests/support/readable_bytes.h"

namespace LPARAMS::Server {
namespace {

using namespace testing_support;

class UserListWireTest : public testing::Test {
 protected:
  const ExpectedGroup& user = expectedGroup("USER");
  const std::string changed = user.record(whenChanged);
  const std::string initial = user.record(initially);
  int locked = 0;  // how often a Watcher found the list locked
  ParamVector<USER_t> users{"USERS"};
};

/// An entry that looks at the list's lock while it is saved and written, and at its own end.
struct Watcher : USER_t {
  Watcher(ParamVector<USER_t>& list, int& locked) : list(list), locked(locked) {}
  ~Watcher() override { look(); }
  bool save(std::ostream& os, int indent) override {
    look();
    (void)USER_t::save(os, indent);
    return false;
  }
  bool write(CommandStreamOut& out) override {
    look();
    (void)USER_t::write(out);
    return false;
  }
  void look() { locked += isLocked(list) ? 1 : 100; }

  ParamVector<USER_t>& list;
  int& locked;
};

TEST_F(UserListWireTest, AnEmptyListIsItsCountAlone) {
  EXPECT_EQ(hex(wireBytes(users)), "00 00 00 00");
}

TEST_F(UserListWireTest, AnEntryIsItsRecord) {
  listAdd(users)->NAME.value = "ann";
  const std::string named = user.record(initiallyBut({{"NAME", {"ann", "03 00 00 00 61 6E 6E"}}}));
  EXPECT_EQ(hex(wireBytes(users)), "01 00 00 00 " + hex(named));
}

TEST_F(UserListWireTest, EntriesAreWrittenAndReadInListOrder) {
  const std::string record = unhex("03 00 00 00") + changed + initial + changed;
  const ReadResult read = readBytes(users, record + "more");
  EXPECT_TRUE(read.result);
  EXPECT_EQ(read.position, record.size());
  EXPECT_EQ(hex(wireBytes(users)), hex(record));
  EXPECT_EQ(savedText(users), "/USERS=\n" + user.text(1, whenChanged) + user.text(1, initially) +
                                  user.text(1, whenChanged) + "end=\n");
}

TEST_F(UserListWireTest, ReadingReplacesTheWholeList) {
  listAdd(users)->NAME.value = "old";
  EXPECT_TRUE(readBytes(users, unhex("01 00 00 00") + changed).result);
  ASSERT_EQ(users.items.size(), 1u);
  EXPECT_EQ(users.items[0]->NAME.value, "a 1");
  EXPECT_TRUE(readBytes(users, unhex("00 00 00 00")).result);
  EXPECT_TRUE(users.items.empty());
}

TEST_F(UserListWireTest, EveryStrictPrefixThrowsAndLeavesTheEntriesMadeSoFar) {
  const std::string record = unhex("02 00 00 00") + changed + changed;
  for (size_t length = 0; length < record.size(); ++length) {
    SCOPED_TRACE(length);
    listAdd(users)->NAME.value = "old";
    EXPECT_EQ(readBytes(users, record.substr(0, length)).thrown, "CommandStreamError");

    std::string expected = "/USERS=\n";
    for (size_t begin = 4; begin <= length; begin += changed.size()) {
      size_t end = begin;  // of the member's bytes in the record
      expected += user.text(1, [&](const ExpectedParam& param) -> const Forms& {
        end += unhex(param.changed.bytes).size();
        return end <= length ? param.changed : param.initial;
      });
    }
    EXPECT_EQ(savedText(users), expected + "end=\n");
  }
}

TEST_F(UserListWireTest, ACountLargerThanTheEntriesLeavesTheLastOneIncomplete) {
  EXPECT_EQ(readBytes(users, unhex("02 00 00 00") + changed).thrown, "CommandStreamError");
  ASSERT_EQ(users.items.size(), 2u);
  EXPECT_EQ(savedText(*users.items[0]), user.text(0, whenChanged));
  EXPECT_EQ(savedText(*users.items[1]), user.text(0, initially));
}

TEST_F(UserListWireTest, AnAbsurdCountReservesNothing) {
  for (const char* count : {"FF FF FF FF", "FF FF FF 7F", "00 00 00 80"}) {
    EXPECT_EQ(readBytes(users, unhex(count) + changed).thrown, "CommandStreamError");
    EXPECT_EQ(users.items.size(), 2u);
    EXPECT_LT(users.items.capacity(), 16u);
  }
}

TEST_F(UserListWireTest, TheOldEntriesAreDestroyedUnderTheLockBeforeTheCountIsRead) {
  users.items.push_back(new Watcher(users, locked));
  users.items.push_back(new Watcher(users, locked));
  EXPECT_EQ(readBytes(users, unhex("01 00")).thrown, "CommandStreamError");
  EXPECT_TRUE(users.items.empty());
  EXPECT_EQ(locked, 2);
  EXPECT_FALSE(isLocked(users));
}

TEST_F(UserListWireTest, SaveAndWriteHoldTheListsLockAndIgnoreWhatTheEntriesReturn) {
  users.items.push_back(new Watcher(users, locked));
  users.items.push_back(new Watcher(users, locked));
  EXPECT_EQ(savedText(users),
            "/USERS=\n" + user.text(1, initially) + user.text(1, initially) + "end=\n");
  EXPECT_EQ(locked, 2);
  EXPECT_EQ(hex(wireBytes(users)), hex(unhex("02 00 00 00") + initial + initial));
  EXPECT_EQ(locked, 4);
}

TEST_F(UserListWireTest, TheListIsReadAndWrittenAsAWholeFromSeveralThreads) {
  const std::string one = unhex("01 00 00 00") + changed;
  const std::string two = unhex("02 00 00 00") + initial + changed;
  std::jthread reader([&] {
    for (int i = 0; i < 200; ++i) readBytes(users, i % 2 == 0 ? one : two);
  });
  std::jthread saver([&] {
    for (int i = 0; i < 200; ++i) savedText(users);
  });
  for (int i = 0; i < 200; ++i) {
    const std::string bytes = wireBytes(users);
    EXPECT_TRUE(bytes == one || bytes == two || bytes == unhex("00 00 00 00")) << hex(bytes);
  }
}

}  // namespace
}  // namespace LPARAMS::Server
