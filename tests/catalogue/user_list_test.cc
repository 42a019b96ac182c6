#include "lparams/catalogue/user_list.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "tests/catalogue/expected_groups.h"
#include "tests/support/param_forms.h"
#include "tests/support/recording_load_log.h"

namespace LPARAMS::Server {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// An entry that counts how many of its kind have been destroyed.
struct CountedUser : USER_t {
  explicit CountedUser(int& destroyed) : destroyed(destroyed) {}
  ~CountedUser() override { ++destroyed; }
  int& destroyed;
};

class UserListTest : public testing::Test {
 protected:
  USER_t* addCounted() {
    users.items.push_back(new CountedUser(destroyed));
    return users.items.back();
  }

  std::vector<std::string> names() const {
    std::vector<std::string> names;
    for (const USER_t* user : users.items) names.push_back(user->NAME.value);
    return names;
  }

  int destroyed = 0;
  ParamVector<USER_t> users{"USERS"};
};

TEST_F(UserListTest, IsBuiltEmptyAndHoldsNothingInItsParameterLists) {
  EXPECT_THAT(users.items, IsEmpty());
  EXPECT_THAT(users.fileParams, IsEmpty());
  EXPECT_THAT(users.wireParams, IsEmpty());
  EXPECT_EQ(users.getTypeId(), 8);
}

TEST_F(UserListTest, AnEmptyListIsSavedAsHeadAndEnd) {
  EXPECT_EQ(savedText(users, 0), "/USERS=\nend=\n");
  EXPECT_EQ(savedText(users, 1), "    /USERS=\n    end=\n");
}

TEST_F(UserListTest, EntriesAreSavedAsNestedBlocks) {
  listAdd(users)->NAME.value = "ann";
  listAdd(users)->PMP_TIMEOUT.value = 60;
  const ExpectedGroup& user = expectedGroup("USER");
  EXPECT_EQ(savedText(users, 1),
            "    /USERS=\n" + user.text(2, initiallyBut({{"NAME", {"ann", ""}}})) +
                user.text(2, initiallyBut({{"PMP_TIMEOUT", {"60", ""}}})) + "    end=\n");
}

TEST_F(UserListTest, ThreeBlocksLoadAsThreeEntriesInFileOrder) {
  const ExpectedGroup& user = expectedGroup("USER");
  ActiveLoadLog log;
  EXPECT_TRUE(loadText(users, "\n" + user.text(2, whenChanged) + user.text(2, initially) +
                                  user.text(2, whenChanged) + "    end=\n"));
  EXPECT_EQ(users.items.size(), 3u);
  EXPECT_THAT(names(), ElementsAre("a 1", "", "a 1"));
  EXPECT_THAT(log.reports, IsEmpty());
  EXPECT_EQ(savedText(users, 1), "    /USERS=\n" + user.text(2, whenChanged) +
                                     user.text(2, initially) + user.text(2, whenChanged) +
                                     "    end=\n");
}

TEST_F(UserListTest, NoMemberOfTheListIsEverMissing) {
  ActiveLoadLog log;
  EXPECT_TRUE(loadText(users, "\nend=\n"));
  EXPECT_THAT(users.items, IsEmpty());
  EXPECT_THAT(log.reports, IsEmpty());
}

TEST_F(UserListTest, MembersOfAnEntryMayBeMissing) {
  ActiveLoadLog log;
  EXPECT_TRUE(loadText(users, "\n/USER=\nNAME=ann\nend=\nUSER=\nend=\nend=\n"));
  EXPECT_THAT(names(), ElementsAre("ann", ""));
  EXPECT_THAT(log.reports, ElementsAre(missingReport("USER", 1), missingReport("USER", 0)));
}

TEST_F(UserListTest, KeysOtherThanUserAreUnknown) {
  ActiveLoadLog log;
  EXPECT_TRUE(loadText(users, "\n/USERS=\nX=1\nend=\n/user=\nend=\nNAME=ann\nend=\n"));
  EXPECT_THAT(users.items, IsEmpty());
  EXPECT_THAT(log.reports,
              ElementsAre("unknownParam(\"USERS\", USERS)", "unknownParam(\"X\", USERS)",
                          "unknownParam(\"user\", USERS)", "unknownParam(\"NAME\", USERS)"));
}

// Kept: a load is meant to run once, on an empty list.
TEST_F(UserListTest, ASecondLoadAppendsTheEntriesOfTheFileAgain) {
  const std::string block = "\n/USER=\nNAME=ann\nend=\n/USER=\nNAME=bob\nend=\nend=\n";
  EXPECT_TRUE(loadText(users, block));
  EXPECT_TRUE(loadText(users, block));
  EXPECT_THAT(names(), ElementsAre("ann", "bob", "ann", "bob"));
}

TEST_F(UserListTest, AnEntryWithoutItsEndStaysAndFailsTheLoad) {
  ActiveLoadLog log;
  EXPECT_FALSE(loadText(users, "\n/USER=\nNAME=ann\n"));
  EXPECT_THAT(names(), ElementsAre("ann"));
  EXPECT_THAT(log.reports, ElementsAre("paramFailed(\"USER\", USERS)"));
}

TEST_F(UserListTest, EveryRequestForUserMakesANewEntryAtItsDefaults) {
  listAdd(users)->NAME.value = "ann";
  Param* second = users.getParam("USER");
  Param* third = users.getParam("USER");
  EXPECT_THAT(users.items, ElementsAre(testing::_, second, third));
  EXPECT_NE(second, third);
  EXPECT_EQ(savedText(*third), expectedGroup("USER").text(0, initially));
}

TEST_F(UserListTest, AnyOtherRequestMakesNone) {
  using namespace std::string_literals;
  for (const std::string& name : {"USERS"s, "user"s, "User"s, ""s, "USER "s, "USER\0"s, "NAME"s}) {
    EXPECT_EQ(users.getParam(name), nullptr) << name;
  }
  EXPECT_THAT(users.items, IsEmpty());
}

TEST_F(UserListTest, ListAddAppendsAnEntryAtItsDefaults) {
  USER_t* first = listAdd(users);
  USER_t* second = listAdd(users);
  EXPECT_THAT(users.items, ElementsAre(first, second));
  EXPECT_EQ(savedText(*second), expectedGroup("USER").text(0, initially));
}

TEST_F(UserListTest, ListDelRemovesAndDestroysAnEntryAndKeepsTheOrder) {
  USER_t* first = addCounted();
  USER_t* second = addCounted();
  USER_t* third = addCounted();
  listDel(users, second);
  EXPECT_THAT(users.items, ElementsAre(first, third));
  EXPECT_EQ(destroyed, 1);
}

TEST_F(UserListTest, ListDelRemovesEveryOccurrenceAndDestroysOnce) {
  USER_t* twice = addCounted();
  USER_t* other = addCounted();
  users.items.push_back(twice);
  listDel(users, twice);
  EXPECT_THAT(users.items, ElementsAre(other));
  EXPECT_EQ(destroyed, 1);
}

// Kept: the caller hands the entry over in any case.
TEST_F(UserListTest, ListDelDestroysAnEntryThatIsNotInTheList) {
  USER_t* member = addCounted();
  listDel(users, new CountedUser(destroyed));
  EXPECT_EQ(destroyed, 1);
  EXPECT_THAT(users.items, ElementsAre(member));
}

TEST_F(UserListTest, ListDelOfNullDestroysNothing) {
  USER_t* member = addCounted();
  listDel(users, nullptr);
  EXPECT_THAT(users.items, ElementsAre(member));
  EXPECT_EQ(destroyed, 0);
}

TEST_F(UserListTest, ListDelOfNullTakesNullsOutOfTheList) {
  users.items.push_back(nullptr);
  listDel(users, nullptr);
  EXPECT_THAT(users.items, IsEmpty());
}

TEST_F(UserListTest, ListClearDestroysEveryEntry) {
  addCounted();
  addCounted();
  listClear(users);
  EXPECT_THAT(users.items, IsEmpty());
  EXPECT_EQ(destroyed, 2);
  listClear(users);
}

TEST_F(UserListTest, TheListDestroysItsEntriesWithItself) {
  {
    ParamVector<USER_t> inner("USERS");
    inner.items.push_back(new CountedUser(destroyed));
    inner.items.push_back(new CountedUser(destroyed));
  }
  EXPECT_EQ(destroyed, 2);
}

TEST_F(UserListTest, ClearOfAListDoesNothing) {
  addCounted();
  users.clear();
  EXPECT_EQ(users.items.size(), 1u);
  EXPECT_EQ(destroyed, 0);
}

}  // namespace
}  // namespace LPARAMS::Server
