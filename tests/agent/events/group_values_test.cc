#include "agent/events/group_values.h"

#include <gmock/gmock.h>

#include "tests/agent/events/noticed.h"
#include "tests/support/waits_for.h"

namespace agent {
namespace {

using agent_testing::changesIn;
using agent_testing::noticeAfter;
using testing::ElementsAre;
using testing::IsEmpty;

class GroupValuesTest : public testing::Test {
 protected:
  std::vector<std::string> usersAfter(const std::vector<std::string>& names) {
    return changesIn(noticeAfter(settings_.userList, [&] {
      settings_.userList.destroyEntries();
      for (const std::string& name : names) settings_.userList.append()->NAME.value = name;
    }));
  }

  LPARAMS::Server::Catalogue settings_;
};

TEST_F(GroupValuesTest, TellOldAndNewOfWhatHasChanged) {
  auto& ike = settings_.ikeGroup;
  EXPECT_THAT(changesIn(noticeAfter(ike, [] {})), IsEmpty());
  EXPECT_THAT(
      changesIn(noticeAfter(ike,
                            [&] {
                              ike.DPD_IDLE_TIME.value = 77;  // in the file only
                              ike.QCD_SECRET.value = "sesame";
                              ike.IKE_PORT.value = 501;
                            })),
      testing::UnorderedElementsAre("1 IKE.DPD_IDLE_TIME: 30 -> 77", "1 IKE.IKE_PORT: 500 -> 501",
                                    "1 IKE.QCD_SECRET: - -> - secret"));
  auto& schedule = settings_.updateGroup.SCHEDULE.value;
  schedule = "a\nb";
  EXPECT_THAT(changesIn(noticeAfter(settings_.updateGroup, [&] { schedule = "\xFF"; })),
              ElementsAre("1 UPDATE.SCHEDULE: a\nb -> \xFF"));
}

TEST_F(GroupValuesTest, AreThoseOfOneMoment) {
  for (LPARAMS::Server::ParamGroup* group : settings_.groups()) {
    EXPECT_TRUE(testing_support::waitsFor(*group, [&] { (void)GroupValues(*group); }));
  }
}

TEST_F(GroupValuesTest, TellUsersApartByTheirNames) {
  EXPECT_THAT(usersAfter({"anna", "bert"}),
              ElementsAre("2 USERS[anna]: - -> -", "2 USERS[bert]: - -> -"));
  EXPECT_THAT(changesIn(noticeAfter(settings_.userList,
                                    [&] { settings_.userList.items[1]->PMP_TIMEOUT.value = 20; })),
              ElementsAre("1 USERS[bert].PMP_TIMEOUT: 10 -> 20"));
  EXPECT_THAT(usersAfter({"bert"}),
              ElementsAre("1 USERS[bert].PMP_TIMEOUT: 20 -> 10", "3 USERS[anna]: - -> -"));
  EXPECT_THAT(usersAfter({"carl", "bert"}), ElementsAre("2 USERS[carl]: - -> -"));
  EXPECT_THAT(usersAfter({"bert", "carl"}), ElementsAre("4 USERS: - -> -"));
  EXPECT_THAT(usersAfter({"bert", "carl"}), IsEmpty());
}

TEST_F(GroupValuesTest, CallUsersOfOneNameAndThoseWithoutByTheirIndex) {
  (void)usersAfter({"bert"});
  EXPECT_THAT(usersAfter({"bert", "bert", ""}),
              ElementsAre("2 USERS[1]: - -> -", "2 USERS[2]: - -> -"));
  EXPECT_THAT(usersAfter({"carl", "bert"}),
              ElementsAre("2 USERS[carl]: - -> -", "3 USERS[2]: - -> -", "3 USERS[1]: - -> -"));
}

TEST_F(GroupValuesTest, TellWhatANewUserDoesNotHaveAtItsDefault) {
  EXPECT_THAT(changesIn(noticeAfter(settings_.userList,
                                    [&] {
                                      auto* user = settings_.userList.append();
                                      user->NAME.value = "anna";
                                      user->PMP_TIMEOUT.value = 20;
                                    })),
              ElementsAre("2 USERS[anna]: - -> -", "1 USERS[anna].PMP_TIMEOUT: - -> 20"));
}

}  // namespace
}  // namespace agent
