#include "client/steps.h"

#include <gtest/gtest.h>

#include "client/failure.h"

namespace client {
namespace {

using bridge::Change;
using bridge::NamedValue;
using bridge::NamedValues;
using Steps = std::vector<Change>;

NamedValue value(std::string name, std::string running, std::string byDefault) {
  return {
      .name = std::move(name), .running = std::move(running), .byDefault = std::move(byDefault)};
}

/// Two parameters, and users with one field each.
NamedValues withUsers(const std::vector<std::string>& users) {
  NamedValues now{.revisions = {{"IKE", 7}, {"LOG", 8}, {"USERS", 9}}};
  now.values = {value("IKE.A", "1", "0"), value("LOG.B", "x", "x")};
  for (const std::string& user : users) {
    now.values.push_back(value("USERS[" + user + "].NAME", user, ""));
    now.values.push_back(value("USERS[" + user + "].T", "of " + user, "10"));
  }
  return now;
}

TEST(StepsTo, SetWhatIsNamedAndAddUsersWhoAreNotThere) {
  EXPECT_EQ(stepsTo({}, withUsers({"bob"})), Steps{});
  EXPECT_EQ(stepsTo({.values = {{"IKE.A", "2"}, {"USERS[eve].T", "5"}}, .users = {"bob", "eve"}},
                    withUsers({"bob"})),
            (Steps{{Change::AddUser, "eve"},
                   {Change::Set, "IKE.A", "2"},
                   {Change::Set, "USERS[eve].T", "5"}}));
}

TEST(StepsTo, TakeTheRestToItsDefaultsIfTheSettingsAreExclusive) {
  EXPECT_EQ(stepsTo({.users = {"bob"}, .exclusive = true}, withUsers({"ann", "bob"})),
            (Steps{{Change::RemoveUser, "ann"},
                   {Change::Set, "IKE.A", "0"},
                   {Change::Set, "USERS[bob].T", "10"}}));
  EXPECT_EQ(
      stepsTo(
          {.values = {{"IKE.A", "1"}, {"USERS[bob].T", "3"}}, .users = {"bob"}, .exclusive = true},
          withUsers({"bob"})),
      (Steps{{Change::Set, "USERS[bob].T", "3"}}));
}

TEST(StepsTo, RemoveUsersWhoShallNotBeThere) {
  const NamedValues now = withUsers({"ann", "bob", "cid"});
  EXPECT_EQ(stepsTo({.users = {"bob", "eve"}, .absent = {"cid", "dan"}}, now),
            (Steps{{Change::RemoveUser, "cid"}, {Change::AddUser, "eve"}}));
  EXPECT_EQ(stepsTo({.users = {"bob"}, .onlyUsers = true}, now),
            (Steps{{Change::RemoveUser, "ann"}, {Change::RemoveUser, "cid"}}));
}

TEST(StepsTo, MoveUsersToTheEndUntilTheOrderIsRight) {
  const Wanted wanted{.users = {"ann", "cid", "bob"}, .exactOrder = true};
  EXPECT_EQ(stepsTo(wanted, withUsers({"ann", "bob", "cid"})),
            (Steps{{Change::RemoveUser, "bob"},
                   {Change::RemoveUser, "cid"},
                   {Change::AddUser, "cid"},
                   {Change::Set, "USERS[cid].T", "of cid"},
                   {Change::AddUser, "bob"},
                   {Change::Set, "USERS[bob].T", "of bob"}}));
  EXPECT_EQ(stepsTo(wanted, withUsers({"ann", "cid", "bob"})), Steps{});
  EXPECT_EQ(stepsTo(wanted, withUsers({"ann", "cid"})), (Steps{{Change::AddUser, "bob"}}));
}

/// Refuses the first writes.
class BusyStore final : public Store {
 public:
  explicit BusyStore(int refusals) : refusals_(refusals) {}

  NamedValues get(const bridge::Names& /*names*/) override {
    ++reads;
    return withUsers({});
  }
  NamedValues set(const bridge::NamedChanges& changes) override {
    last = changes;
    if (refusals_-- > 0) throw Conflict("changed meanwhile");
    return {};
  }
  NamedValues tryOut(const bridge::NamedChanges& /*changes*/) override { return {}; }
  void save(const Saving& /*how*/) override {}
  std::string schema() override { return {}; }

  int reads = 0;
  bridge::NamedChanges last;

 private:
  int refusals_;
};

Steps setA(const NamedValues& /*now*/) { return {{Change::Set, "IKE.A", "2"}}; }

TEST(ChangeOfAStore, StatesTheRevisionsOfTheGroupsItChanges) {
  BusyStore store(0);
  EXPECT_EQ(change(store, setA).steps, setA({}));
  EXPECT_EQ(store.last, (bridge::NamedChanges{{{"IKE", 7}}, setA({})}));
}

TEST(ChangeOfAStore, IsTriedAgainThreeTimes) {
  BusyStore third(3);
  (void)change(third, setA);
  EXPECT_EQ(third.reads, 4);
  BusyStore fourth(4);
  EXPECT_THROW((void)change(fourth, setA), Conflict);
}

TEST(ChangeOfAStore, WritesNothingWithoutSteps) {
  BusyStore store(1);
  EXPECT_TRUE(change(store, [](const NamedValues&) { return Steps(); }).steps.empty());
}

}  // namespace
}  // namespace client
