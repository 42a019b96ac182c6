#include "agent/confirmation/going_back.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "editing/copy_group.h"
#include "editing/settings_changes.h"

namespace agent {
namespace {

using namespace LPARAMS::Server;
using testing::ElementsAre;
using testing::IsEmpty;

/// Settings before a change, after it, and as they are by now.
class GoingBack : public testing::Test {
 protected:
  GoingBack() {
    for (const char* name : {"al", "bob", "cy"}) addUser(before_, name);
    copy(before_, after_);
  }

  static void copy(Catalogue& from, Catalogue& to) {
    for (size_t i = 0; i < from.groups().size(); ++i) {
      editing::copyGroup(*from.groups()[i], *to.groups()[i]);
    }
  }

  static USER_t& addUser(Catalogue& settings, const std::string& name, unsigned timeout = 10) {
    USER_t& user = *listAdd(settings.userList);
    user.NAME.value = name;
    user.PMP_TIMEOUT.value = timeout;
    return user;
  }

  static void removeUser(Catalogue& settings, size_t index) {
    listDel(settings.userList, settings.userList.items[index]);
  }

  /// To be called when the change has been made.
  void made() { copy(after_, now_); }

  std::vector<std::string> back() { return goBack(before_, after_, now_); }

  std::vector<std::string> users() {
    std::vector<std::string> names;
    for (const USER_t* user : now_.userList.items) names.push_back(user->NAME.value);
    return names;
  }

  bool isAsBefore() { return editing::changesBetween(before_, now_).empty(); }

  Catalogue before_;
  Catalogue after_;
  Catalogue now_;
};

TEST_F(GoingBack, OfValues) {
  after_.IKE->IKE_PORT.value = 501;
  after_.IKE->DPD_IDLE_TIME.value = 44;  // in the file only
  after_.IKE->QCD_SECRET.value = "s3cret";
  after_.userList.items[1]->PMP_TIMEOUT.value = 20;
  made();
  now_.IKE->NATT_PORT.value = 7;  // by somebody else
  EXPECT_THAT(back(), IsEmpty());
  EXPECT_EQ(now_.IKE->NATT_PORT.value, 7);
  now_.IKE->NATT_PORT.value = before_.IKE->NATT_PORT.value;
  EXPECT_TRUE(isAsBefore());
}

TEST_F(GoingBack, LeavesWhatWasChangedAgain) {
  after_.IKE->IKE_PORT.value = 501;
  after_.IKE->NATT_PORT.value = 7;
  after_.LOG->WALL_ON.value = false;
  after_.userList.items[1]->PMP_TIMEOUT.value = 20;
  made();
  now_.IKE->IKE_PORT.value = 502;
  now_.userList.items[1]->PMP_TIMEOUT.value = 21;
  now_.LOG->WALL_ON.value = true;  // somebody has put it back
  EXPECT_THAT(back(), ElementsAre("IKE.IKE_PORT", "USERS[bob].PMP_TIMEOUT"));
  EXPECT_EQ(now_.IKE->IKE_PORT.value, 502);
  EXPECT_EQ(now_.IKE->NATT_PORT.value, before_.IKE->NATT_PORT.value);
  EXPECT_EQ(now_.userList.items[1]->PMP_TIMEOUT.value, 21u);
  EXPECT_THAT(back(), ElementsAre("IKE.IKE_PORT", "USERS[bob].PMP_TIMEOUT")) << "once more";
}

TEST_F(GoingBack, OfUsersThatWereAddedAndRemoved) {
  removeUser(after_, 0);
  addUser(after_, "dan", 33);
  made();
  EXPECT_THAT(users(), ElementsAre("bob", "cy", "dan"));
  EXPECT_THAT(back(), IsEmpty());
  EXPECT_TRUE(isAsBefore()) << "the order too";
  EXPECT_THAT(back(), IsEmpty()) << "once more";
  EXPECT_TRUE(isAsBefore());
}

TEST_F(GoingBack, OfTheOrder) {
  std::swap(after_.userList.items[0], after_.userList.items[2]);
  made();
  EXPECT_THAT(users(), ElementsAre("cy", "bob", "al"));
  EXPECT_THAT(back(), IsEmpty());
  EXPECT_TRUE(isAsBefore());
}

TEST_F(GoingBack, LeavesUsersThatWereChangedAgain) {
  removeUser(after_, 0);
  removeUser(after_, 0);
  after_.userList.items[0]->PMP_TIMEOUT.value = 11;
  addUser(after_, "dan");
  addUser(after_, "eve");
  made();
  now_.userList.items[1]->PMP_TIMEOUT.value = 22;  // dan's
  addUser(now_, "al", 33);
  removeUser(now_, 0);  // cy
  EXPECT_THAT(back(), ElementsAre("USERS[cy].PMP_TIMEOUT", "USERS[dan]", "USERS[al]"));
  EXPECT_THAT(users(), ElementsAre("dan", "al", "bob"));
  EXPECT_EQ(now_.userList.items[1]->PMP_TIMEOUT.value, 33u);
}

TEST_F(GoingBack, KeepsTheOrderThatSomebodyHasMade) {
  after_.userList.items[0]->PMP_TIMEOUT.value = 11;
  removeUser(after_, 1);
  made();
  std::swap(now_.userList.items[0], now_.userList.items[1]);
  EXPECT_THAT(back(), IsEmpty());
  EXPECT_THAT(users(), ElementsAre("cy", "al", "bob"));
  EXPECT_EQ(now_.userList.items[1]->PMP_TIMEOUT.value, 10u);
}

TEST_F(GoingBack, OfWhatWasNeverMade) {
  after_.IKE->IKE_PORT.value = 501;
  addUser(after_, "dan");
  copy(before_, now_);
  EXPECT_THAT(back(), IsEmpty());
  EXPECT_TRUE(isAsBefore());
}

}  // namespace
}  // namespace agent
