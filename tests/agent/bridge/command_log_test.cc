#include "agent/bridge/command_log.h"

#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <vector>

#include "lparams/catalogue/catalogue.h"

namespace agent {
namespace {

using LPARAMS::Server::Catalogue;
using LPARAMS::Server::ParamGroup;

class ChangedNamesTest : public testing::Test {
 protected:
  /// What the action changes in the group.
  static std::string changes(ParamGroup& group, const std::function<void()>& action) {
    const GroupValues before(group);
    action();
    const GroupValues after(group);
    ChangedNames names;
    before.visitChangesUntil(after, [&](const GroupChange& change) { names.add(change); });
    return names.text();
  }

  std::string usersAfter(const std::vector<std::string>& names) {
    return changes(settings_.userList, [&] {
      settings_.userList.destroyEntries();
      for (const std::string& name : names) settings_.userList.append()->NAME.value = name;
    });
  }

  Catalogue settings_;
};

TEST_F(ChangedNamesTest, NameWhatIsInTheFileOnlyToo) {
  EXPECT_EQ(changes(settings_.ikeGroup, [&] { settings_.ikeGroup.DPD_IDLE_TIME.value = 77; }),
            "DPD_IDLE_TIME");
}

TEST_F(ChangedNamesTest, NameWhatHasChangedAndNoValue) {
  EXPECT_EQ(changes(settings_.ikeGroup, [] {}), "none");
  EXPECT_EQ(changes(settings_.ikeGroup,
                    [&] {
                      settings_.ikeGroup.QCD_SECRET.value = "sesame";
                      settings_.ikeGroup.IKE_PORT.value = 501;
                    }),
            "IKE_PORT,QCD_SECRET");
  EXPECT_EQ(changes(settings_.adminGroup, [&] { settings_.adminGroup.ADMIN_GROUP.value = "x"; }),
            "ADMIN_GROUP");
}

TEST_F(ChangedNamesTest, TellUsersApartByTheirNames) {
  EXPECT_EQ(usersAfter({"anna", "bert"}), "[anna] added,[bert] added");
  EXPECT_EQ(changes(settings_.userList,
                    [&] {
                      settings_.userList.items[1]->PMP_TIMEOUT.value = 20;
                      settings_.userList.items[1]->PMP_PSK_NAME.value = "office";
                    }),
            "[bert].PMP_TIMEOUT,[bert].PMP_PSK_NAME");
  EXPECT_EQ(usersAfter({"bert"}), "[bert].PMP_TIMEOUT,[bert].PMP_PSK_NAME,[anna] removed");
  EXPECT_EQ(usersAfter({"carl", "bert"}), "[carl] added");
  EXPECT_EQ(usersAfter({"bert", "carl"}), "order");
  EXPECT_EQ(usersAfter({"bert", "carl"}), "none");
  EXPECT_EQ(usersAfter({"bert", "bert"}), "[bert] added,[carl] removed");
}

TEST_F(ChangedNamesTest, ShowAUsersNameSoThatItIsNothingElse) {
  EXPECT_EQ(usersAfter({"a],[b", "c d", std::string(50, 'x')}),
            R"(["a],[b"] added,["c d"] added,[)" + std::string(40, 'x') + "...] added");
}

TEST_F(ChangedNamesTest, NameOnlyTheFirstOfMany) {
  std::vector<std::string> names;
  for (int i = 0; i < 103; ++i) names.push_back(std::to_string(i));
  const std::string changes = usersAfter(names);
  EXPECT_THAT(changes, testing::StartsWith("[0] added,[1] added,"));
  EXPECT_THAT(changes, testing::EndsWith(",[99] added,... (3 more)"));
}

}  // namespace
}  // namespace agent
