#include "client/settings.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <tuple>

#include "tests/catalogue/expected_groups.h"
#include "tests/client/failure_message.h"

namespace client {
namespace {

using client_testing::failureOf;
using namespace LPARAMS::Server;

/// How the place of a parameter with this name fails.
std::string placing(const std::string& name) {
  Settings settings;
  return failureOf([&] { settings.place(name); });
}

TEST(ClientSettings, WhatIsNoNameIsRefused) {
  for (const char* name : {"", "IKE", "IKE_PORT", "IKE[0].IKE_PORT", "USERS.NAME", "USERS[].NAME",
                           "USERS[-1].NAME", "USERS[1x].NAME", "USERS[ 1].NAME", "USERS[1.NAME",
                           "USERS[0]x.NAME", "USERS[99999999999999999999].NAME"}) {
    EXPECT_EQ(placing(name), "2: \"" + std::string(name) +
                                 "\" is not the name of a parameter; write GROUP.NAME, or "
                                 "USERS[INDEX].NAME for an entry of the user list");
  }
}

TEST(ClientSettings, GroupThatIsNotThereIsRefused) {
  const struct {
    const char* name;
    const char* group;
  } rows[] = {
      {"FOO.BAR", "FOO"},   {"FOO[0].BAR", "FOO"},    {"ike.IKE_PORT", "ike"}, {".IKE_PORT", ""},
      {"ROOT.IKE", "ROOT"}, {"USER[0].NAME", "USER"}, {"a\nb.c", R"(a\x0ab)"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(placing(row.name), std::string("2: there is no group \"") + row.group +
                                     "\"; the groups are IKE, LOG, UPDATE, POLICY, ADMIN, USERS");
  }
}

TEST(ClientSettings, ParameterThatIsNotThereIsRefused) {
  const struct {
    const char* name;
    std::string failure;
  } rows[] = {
      {"ADMIN.", "2: ADMIN has no parameter \"\"; it has " + expectedNamesOf("ADMIN")},
      {"ADMIN.admin_group",
       "2: ADMIN has no parameter \"admin_group\"; it has " + expectedNamesOf("ADMIN")},
      {"USERS[0].IKE_PORT",
       "2: USERS has no parameter \"IKE_PORT\"; it has " + expectedNamesOf("USER")},
  };
  for (const auto& row : rows) EXPECT_EQ(placing(row.name), row.failure);
}

TEST(ClientSettings, WhatStaysInTheFileIsRefusedWithThatReason) {
  for (const ExpectedGroup& group : expectedGroups()) {
    for (const ExpectedParam& param : group.params) {
      if (param.onWire) continue;
      const std::string name = std::string(group.name) + "." + param.name;
      EXPECT_EQ(placing(name),
                "2: " + name + " stays in the settings file: the bridge does not carry it");
    }
  }
}

/// The place of every parameter that the bridge carries of the group or entry is found by its name.
void expectPlaces(Settings& settings, ParamGroup& owner, const std::string& name,
                  const Place& expected) {
  for (Param* param : owner.wireParams) {
    const Place place = settings.place(name + "." + param->name);
    EXPECT_EQ(std::tie(place.group, place.entry), std::tie(expected.group, expected.entry));
    EXPECT_EQ(&settings.param(place), param);
  }
}

TEST(ClientSettings, EveryParameterOfTheBridgeIsFoundByItsName) {
  Settings settings;
  for (ParamGroup* group : settings.groups()) {
    expectPlaces(settings, *group, group->name, {group, std::nullopt, ""});
  }
}

TEST(ClientSettings, EntriesAreFoundByTheirIndex) {
  Settings settings;
  expectPlaces(settings, *listAdd(settings.userList), "USERS[0]", {&settings.userList, 0, ""});
  expectPlaces(settings, *listAdd(settings.userList), "USERS[1]", {&settings.userList, 1, ""});
}

TEST(ClientSettings, EntryMayBeMissingUntilItIsUsed) {
  Settings settings;
  const Place place = settings.place("USERS[2].NAME");
  EXPECT_EQ(failureOf([&] { settings.param(place); }),
            "2: there is no USERS[2]; entries in the list, counted from 0: 0");
  listAdd(settings.userList);
  listAdd(settings.userList);
  EXPECT_EQ(failureOf([&] { settings.param(place); }),
            "2: there is no USERS[2]; entries in the list, counted from 0: 2");
  listAdd(settings.userList);
  EXPECT_EQ(&settings.param(place), &settings.userList.items[2]->NAME);
}

TEST(ClientSettings, GroupsStandInTheOrderOfTheSettingsFile) {
  Settings settings;
  std::string names;
  for (ParamGroup* group : settings.groups()) {
    EXPECT_EQ(&settings.group(group->name), group);
    names += std::string(group->name) + " ";
  }
  EXPECT_EQ(names, "IKE LOG UPDATE POLICY ADMIN USERS ");
}

}  // namespace
}  // namespace client
