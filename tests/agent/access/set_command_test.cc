#include "agent/access/set_command.h"

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
using bridge::Reply;
using testing::ElementsAre;
using testing::HasSubstr;

class Set : public NamedAccess {
 protected:
  Set() {
    (void)changes_.subscribe(
        [this](const bridge::Event& event) { events_.push_back(event.group); });
  }

  std::vector<std::string> events_;
};

TEST_F(Set, ChangesGroupsAndTellsWhatWasAndIs) {
  const NamedValues done = set({{Change::Set, "LOG.WALL_ON", "false"},
                                {Change::Set, "IKE.IKE_PORT", "501"},
                                {Change::Set, "LOG.LANGUAGE", "log_lang_rus"}});
  EXPECT_THAT(
      done.values,
      ElementsAre(
          NamedValue{
              .name = "LOG.WALL_ON", .running = "0", .saved = "1", .byDefault = "1", .before = "1"},
          NamedValue{.name = "IKE.IKE_PORT",
                     .running = "501",
                     .saved = "500",
                     .byDefault = "500",
                     .before = "500"},
          NamedValue{.name = "LOG.LANGUAGE",
                     .running = "LOG_LANG_RUS",
                     .saved = "LOG_LANG_ENG",
                     .byDefault = "LOG_LANG_ENG",
                     .before = "LOG_LANG_ENG"}));
  EXPECT_EQ(server().IKE->IKE_PORT.value, 501);
  EXPECT_FALSE(server().LOG->WALL_ON.value);
  EXPECT_THAT(events_, ElementsAre("IKE", "LOG"));
  ASSERT_EQ(done.revisions.size(), 2U);
  EXPECT_EQ(done.revisions[0].revision, changes_.revision("IKE"));
}

TEST_F(Set, WhatIsSoAlreadyIsNotWritten) {
  const NamedValues done = set({{Change::Set, "IKE.IKE_PORT", "500"}});
  EXPECT_EQ(done.values.at(0).before, done.values.at(0).running);
  EXPECT_TRUE(done.revisions.empty());
  (void)set({{Change::Set, "IKE.IKE_PORT", "7"}, {Change::Set, "IKE.IKE_PORT", "500"}});
  EXPECT_TRUE(events_.empty());
}

/// What an observer of the module, a plain function, sees.
std::string& seen() {
  static std::string text;
  return text;
}
LPARAMS::Server::IKE_t*& observed() {
  static LPARAMS::Server::IKE_t* group = nullptr;
  return group;
}

TEST_F(Set, WhatIsInTheFileOnlyIsThereWhenTheModuleTellsItsObservers) {
  seen().clear();
  observed() = server().IKE;
  server().IKE->observers.push_back([](int event) {
    seen() += std::to_string(event) + ": " + std::to_string(observed()->DPD_IDLE_TIME.value) + "; ";
  });
  (void)set({{Change::Set, "IKE.DPD_IDLE_TIME", "77"}});
  EXPECT_EQ(seen(), "1: 77; 0: 77; ");
  EXPECT_THAT(events_, ElementsAre("IKE"));
}

TEST_F(Set, AllMistakesAreToldAndNothingIsWritten) {
  EXPECT_EQ(refusalOf({{Change::Set, "IKE.EXCHANGE_TIMEOUT", "120"},
                       {Change::Set, "IKE.IKE_PROT", "1"},
                       {Change::Set, "IKE.NATT_PORT", "0"},
                       {Change::Set, "LOG", "0"},
                       {Change::Set, "IKE.QCD_SECRET", "s3\ncret"},
                       {Change::Set, "UPDATE.PATH", "a\tb"},
                       {Change::Set, "UPDATE.URL", std::string(64 * 1024 + 1, 'x')},
                       {Change::RemoveUser, "bob"}}),
            "IKE.IKE_PROT: no such parameter; did you mean IKE.IKE_PORT?\n"
            "IKE.NATT_PORT: \"0\" is not a whole number from 1 to 65535\n"
            "LOG: not a single parameter\n"
            "IKE.QCD_SECRET: the value is not one line of text without control characters\n"
            "UPDATE.PATH: \"a\\x09b\" is not one line of text without control characters\n"
            "UPDATE.URL: a text of 65537 bytes is too long; expected at most 65536\n"
            "USERS[bob]: no such user");
  EXPECT_TRUE(events_.empty());
}

TEST_F(Set, WhatIsNotNamedIsNotChecked) {
  server().UPDATE->PATH.value = "a\tb";  // from a settings file that was written by hand
  (void)set({{Change::Set, "UPDATE.URL", "http://x"}});
  EXPECT_EQ(running("UPDATE.URL"), "http://x");
  EXPECT_EQ(running("UPDATE.PATH"), "a\tb");
}

TEST_F(Set, AddsChangesRenamesAndRemovesUsers) {
  (void)set({{Change::AddUser, "anna"},
             {Change::AddUser, "bob"},
             {Change::Set, "USERS[bob].PMP_TIMEOUT", "20"}});
  EXPECT_EQ(running("USERS[bob].PMP_TIMEOUT"), "20");
  EXPECT_EQ(running("USERS[anna].PMP_TIMEOUT"), "10");

  // Two who swap their names; a third one comes and goes.
  const NamedValues done = set({{Change::Set, "USERS[anna].NAME", "bob"},
                                {Change::Set, "USERS[bob].NAME", "anna"},
                                {Change::AddUser, "eve"},
                                {Change::Set, "USERS[eve].PMP_TIMEOUT", "30"},
                                {Change::RemoveUser, "eve"}});
  ASSERT_EQ(done.values.size(), 2U);
  EXPECT_EQ(done.values[0].name, "USERS[anna].NAME");
  EXPECT_EQ(done.values[0].before, "anna");
  EXPECT_EQ(done.values[0].running, "bob");
  EXPECT_EQ(running("USERS[anna].PMP_TIMEOUT"), "20");

  (void)set({{Change::RemoveUser, "anna"}});
  ASSERT_EQ(server().USERS->items.size(), 1U);
  EXPECT_EQ(server().USERS->items[0]->NAME.value, "bob");
  EXPECT_THAT(events_, ElementsAre("USERS", "USERS", "USERS"));
}

TEST_F(Set, TwoUsersOfOneNameCannotBeMade) {
  (void)set({{Change::AddUser, "anna"}, {Change::AddUser, "bob"}});
  EXPECT_EQ(refusalOf({{Change::AddUser, "anna"}}), "USERS[2]: there is a user \"anna\" already");
  EXPECT_EQ(refusalOf({{Change::Set, "USERS[bob].NAME", "anna"}}),
            "USERS[bob].NAME: there is a user \"anna\" already");
  EXPECT_EQ(refusalOf({{Change::AddUser, ""}}), "USERS[2]: a user needs a name");
  EXPECT_EQ(refusalOf({{Change::AddUser, "a\nb"}}),
            "USERS[a\\x0ab]: \"a\\x0ab\" is not one line of text without control characters");
  EXPECT_EQ(refusalOf({{Change::AddUser, "c"}, {Change::AddUser, "d"}}),
            "USERS: 4 entries are too many; expected at most 3");
}

TEST_F(Set, UsersOfOneNameWhoAreThereCanBeToldApart) {
  for (int i = 0; i < 2; ++i) listAdd(*server().USERS)->NAME.value = "anna";
  (void)set({{Change::Set, "USERS[1].PMP_TIMEOUT", "20"}});
  EXPECT_EQ(server().USERS->items[0]->PMP_TIMEOUT.value, 10U);
  EXPECT_EQ(server().USERS->items[1]->PMP_TIMEOUT.value, 20U);
  (void)set({{Change::Set, "USERS[0].NAME", "berta"}});
  EXPECT_EQ(running("USERS[berta].NAME"), "berta");
}

TEST_F(Set, AStaleRevisionOfAnyGroupIsAConflict) {
  const uint64_t ike = changes_.revision("IKE");
  const uint64_t log = changes_.revision("LOG");
  const Steps steps = {{Change::Set, "IKE.IKE_PORT", "501"}, {Change::Set, "LOG.WALL_ON", "0"}};
  const Reply reply = setReply({{{"IKE", ike}, {"LOG", log + 1}}, steps});
  EXPECT_EQ(reply.reason, Reason::Conflict);
  EXPECT_THAT(reply.text, HasSubstr("LOG has changed: "));
  EXPECT_EQ(running("IKE.IKE_PORT"), "500");
  EXPECT_EQ(setReply({{{"IKE", ike}, {"LOG", log}}, steps}).result, 1);
  EXPECT_EQ(setReply({{{"IKE", ike}}, steps}).reason, Reason::Conflict);
  EXPECT_EQ(setReply({{{"FOO", 1}}, steps}).reason, Reason::Conflict);
}

TEST_F(Set, TakesTurnsWithOtherWrites) {
  for (const char* port : {"501", "illegal"}) {
    const bridge::NamedChanges changes = {{}, {{Change::Set, "IKE.IKE_PORT", port}}};
    EXPECT_TRUE(testing_support::waitsFor(service_.writeTurn(), [&] { (void)setReply(changes); }));
  }
}

TEST_F(Set, AStrangerLearnsNothingButThatHeIsOne) {
  const Reply reply = setReply(stranger_, {{}, {{Change::Set, "IKE.IKE_PROT", "501"}}});
  EXPECT_EQ(reply.reason, Reason::NotAuthorised);
  EXPECT_THAT(reply.text, HasSubstr("may not use module 13 at level 0"));
  EXPECT_EQ(set_.execute(stranger_, "garbage").reason, Reason::NotAuthorised);
  EXPECT_EQ(set_.execute(root_, "garbage").reason, Reason::MalformedInput);
}

TEST_F(Set, WhatIsTriedIsAnsweredAsIfItWereWrittenAndIsNot) {
  const NamedValues before = get({});
  const Steps steps = {{Change::Set, "IKE.IKE_PORT", "501"},
                       {Change::Set, "LOG.WALL_ON", "true"},
                       {Change::AddUser, "bob"},
                       {Change::Set, "USERS[bob].PMP_TIMEOUT", "20"}};
  const NamedValues tried = valuesIn(tryReply(root_, {before.revisions, steps}));
  EXPECT_EQ(get({}), before);
  EXPECT_TRUE(events_.empty());
  NamedValues done = set(steps);
  EXPECT_EQ(tried.values, done.values);
  ASSERT_EQ(tried.revisions.size(), 2U);
  EXPECT_EQ(tried.revisions[0], before.revisions[0]);
  EXPECT_EQ(tried.revisions[1].group, "USERS");
  EXPECT_LT(tried.revisions[1].revision, done.revisions[1].revision);
}

TEST_F(Set, WhatIsTriedIsRefusedAsIfItWereWritten) {
  const bridge::NamedChanges changes = {
      {}, {{Change::Set, "IKE.IKE_PROT", "1"}, {Change::Set, "IKE.NATT_PORT", "0"}}};
  EXPECT_EQ(tryReply(root_, changes).reason, Reason::IllegalValue);
  EXPECT_EQ(tryReply(root_, changes).text, setReply(changes).text);
  EXPECT_EQ(tryReply(root_, {{{"IKE", 1}}, {}}).reason, Reason::Conflict);
  EXPECT_EQ(tryReply(stranger_, changes).reason, Reason::NotAuthorised);
  EXPECT_EQ(set_.tryOut(root_, "garbage").reason, Reason::MalformedInput);
}

bool& fails() {
  static bool armed = false;
  return armed;
}

TEST_F(Set, AGroupThatFailsTakesThoseBeforeItBack) {
  fails() = true;
  server().LOG->observers.push_back([](int) {
    if (std::exchange(fails(), false)) throw std::runtime_error("not now");
  });
  const NamedValues before = get({});
  const Reply reply = setReply({{},
                                {{Change::Set, "IKE.IKE_PORT", "501"},
                                 {Change::Set, "IKE.DPD_IDLE_TIME", "77"},
                                 {Change::Set, "LOG.WALL_ON", "0"}}});
  EXPECT_EQ(reply.result, 0);
  EXPECT_EQ(reply.reason, Reason::ModuleFailed);
  EXPECT_EQ(reply.text, "writing LOG failed: the module failed: not now");
  EXPECT_EQ(get({}).values, before.values);
  EXPECT_THAT(events_, ElementsAre("IKE", "LOG", "IKE", "LOG"));
}

TEST_F(Set, TextsThatTogetherAreTooLongAreRefused) {
  const std::string text(64 * 1024, 'x');
  Steps steps;
  for (const auto* param : server().UPDATE->wireParams) {
    if (param->getTypeId() == 6)
      steps.push_back({Change::Set, std::string("UPDATE.") + param->name, text});
  }
  ASSERT_GT(steps.size(), 5U);
  (void)set(steps);
  EXPECT_EQ(running("UPDATE.PATH"), text);
  // The same texts often enough for every group: more than the settings may be.
  server().POLICY->PMP_SERVERS.value = std::string(8 * 1024 * 1024, 'x');
  EXPECT_THAT(refusalOf({{Change::Set, "IKE.QCD_SECRET", "x"}}),
              HasSubstr("IKE: the settings would be a text of "));
  (void)set({{Change::Set, "IKE.IKE_PORT", "501"}});  // makes them no longer
  EXPECT_EQ(running("IKE.IKE_PORT"), "501");
}

}  // namespace
}  // namespace agent
