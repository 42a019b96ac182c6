#include "agent/access/get_command.h"

#include <gmock/gmock.h>

#include "tests/agent/access/named_access.h"
#include "tests/support/waits_for.h"

namespace agent {
namespace {

using agent_testing::NamedAccess;
using agent_testing::NamedValue;
using agent_testing::NamedValues;
using agent_testing::Steps;
using bridge::Change;
using bridge::Reason;
using testing::ElementsAre;
using testing::HasSubstr;

class Get : public NamedAccess {};

TEST_F(Get, GivesTheRunningTheSavedAndTheDefaultValue) {
  server().IKE->IKE_PORT.value = 501;
  save();
  server().IKE->IKE_PORT.value = 502;
  EXPECT_THAT(
      get({"IKE.IKE_PORT", "LOG.WALL_ON"}).values,
      ElementsAre(
          NamedValue{.name = "IKE.IKE_PORT", .running = "502", .saved = "501", .byDefault = "500"},
          NamedValue{.name = "LOG.WALL_ON", .running = "1", .saved = "1", .byDefault = "1"}));
}

TEST_F(Get, GivesWhatIsInTheFileOnly) {
  server().IKE->DPD_IDLE_TIME.value = 77;
  EXPECT_EQ(running("IKE.DPD_IDLE_TIME"), "77");
}

TEST_F(Get, GivesEverythingInOrderIfNothingIsNamed) {
  (void)listAdd(*server().USERS);
  const NamedValues all = get({});
  std::vector<std::string> names;
  for (const NamedValue& value : all.values) names.push_back(value.name);
  std::vector<std::string> expected;
  for (const auto* group : server().groups()) {
    const bool isList = group == server().USERS;
    for (const auto* param : isList ? server().USERS->items[0]->fileParams : group->fileParams) {
      expected.push_back(group->name + std::string(isList ? "[0]." : ".") + param->name);
    }
  }
  EXPECT_EQ(names, expected);
  ASSERT_EQ(all.revisions.size(), 6U);
  EXPECT_EQ(all.revisions[0].group, "IKE");
  EXPECT_EQ(all.revisions[0].revision, changes_.revision("IKE"));
}

TEST_F(Get, GivesWholeGroupsAndUsers) {
  (void)set({{Change::AddUser, "bob"}});
  EXPECT_EQ(get({"ADMIN"}).values.size(), server().ADMIN->fileParams.size());
  const NamedValues bob = get({"USERS[bob]"});
  EXPECT_EQ(bob.values.size(), server().USERS->items[0]->fileParams.size());
  EXPECT_EQ(bob.values[0].name, "USERS[bob].NAME");
  EXPECT_EQ(bob.values[0].running, "bob");
  EXPECT_EQ(bob.values[0].saved, std::nullopt);
  EXPECT_EQ(bob.values[0].byDefault, "");
}

TEST_F(Get, UsersWhoWereSavedAndRemovedHaveNoRunningValue) {
  (void)set({{Change::AddUser, "bob"}, {Change::AddUser, "eve"}});
  save();
  (void)set({{Change::RemoveUser, "bob"}});
  size_t removed = 0;
  for (const NamedValue& value : get({"USERS"}).values) {
    const bool isBob = value.name.starts_with("USERS[bob].");
    EXPECT_EQ(value.running.has_value(), !isBob) << value.name;
    EXPECT_TRUE(value.saved) << value.name;
    removed += isBob ? 1 : 0;
  }
  EXPECT_EQ(removed, LPARAMS::Server::USER_t().fileParams.size());
}

TEST_F(Get, ValuesAndRevisionsAreOfBetweenTwoWrites) {
  EXPECT_TRUE(testing_support::waitsFor(service_.writeTurn(), [&] { (void)getReply({"LOG"}); }));
}

TEST_F(Get, TellsAllMistakesAtOnce) {
  const bridge::Reply reply = getReply({"IKE.IKE_PROT", "LOG", "USERS[bob].NAME", "nonsense"});
  EXPECT_EQ(reply.reason, Reason::IllegalValue);
  EXPECT_EQ(reply.text,
            "IKE.IKE_PROT: no such parameter; did you mean IKE.IKE_PORT?\n"
            "USERS[bob].NAME: no such user\n"
            "nonsense: no such parameter");
  EXPECT_EQ(reply.output, "");
  EXPECT_THAT(getReply(bridge::Names(150, "x")).text, HasSubstr("\nand 50 more mistakes"));
  EXPECT_EQ(get_.execute(root_, "abc").reason, Reason::MalformedInput);
}

TEST_F(Get, AStrangerGetsNoSecret) {
  server().IKE->QCD_SECRET.value = "s3cret";
  save();
  const bridge::Reply reply = getReply(stranger_, {"IKE"});
  EXPECT_EQ(reply.output.find("s3cret"), std::string::npos);
  for (const NamedValue& value : valuesIn(reply).values) {
    if (value.name != "IKE.QCD_SECRET") continue;
    EXPECT_EQ(value, (NamedValue{.name = "IKE.QCD_SECRET", .secret = true}));
  }
  EXPECT_THAT(get({"IKE.QCD_SECRET"}).values, ElementsAre(NamedValue{.name = "IKE.QCD_SECRET",
                                                                     .secret = true,
                                                                     .running = "s3cret",
                                                                     .saved = "s3cret",
                                                                     .byDefault = ""}));
}

TEST_F(Get, ARequestForTooMuchEndsEarly) {
  server().UPDATE->PATH.value = std::string(64 * 1024, 'x');
  const bridge::Reply reply = getReply(bridge::Names(1000, "UPDATE.PATH"));
  EXPECT_EQ(reply.reason, Reason::ReplyTooLarge);
  EXPECT_EQ(reply.output, "");
}

}  // namespace
}  // namespace agent
