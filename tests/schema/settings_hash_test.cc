#include "schema/settings_hash.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>

#include "lparams/values/values.h"
#include "tests/catalogue/expected_groups.h"
#include "tests/module/lock_calls.h"
#include "text/hash.h"

namespace schema {
namespace {

using namespace LPARAMS::Server;

/// A value that the parameter does not have.
std::string otherValue(Param& param) {
  const std::string now = valueText(param);
  for (const auto* value : {"1", "0", "77", "other"}) {
    if (now != value && setValue(param, value)) return value;
  }
  // An enumeration: one of its names.
  std::istringstream words(legalValues(param));
  for (std::string word; words >> word;) {
    if (word.ends_with(',')) word.pop_back();
    if (word != now && setValue(param, word)) return word;
  }
  ADD_FAILURE() << param.name << " has no other value";
  return {};
}

TEST(SettingsHash, IsEqualForEqualSettings) {
  Catalogue one;
  Catalogue other;
  EXPECT_EQ(settingsHashOf(one), settingsHashOf(other));
  EXPECT_EQ(settingsHashOf(one).open.size(), 32U);
}

TEST(SettingsHash, DiffersWithEachParameterAndComesBackWithIt) {
  Catalogue settings;
  settings.userList.append()->NAME.value = "anna";
  const SettingsHash before = settingsHashOf(settings);
  std::set<std::string> seen = {before.whole};
  const auto walk = [&](const ParamGroup& members) {
    for (Param* param : members.fileParams) {
      const std::string value = valueText(*param);
      (void)otherValue(*param);
      const SettingsHash now = settingsHashOf(settings);
      EXPECT_TRUE(seen.insert(now.whole).second) << param->name;
      EXPECT_EQ(now.open == before.open, isSecret(*param)) << param->name;
      EXPECT_TRUE(setValue(*param, value));
      EXPECT_EQ(settingsHashOf(settings), before) << param->name;
    }
  };
  for (const ParamGroup* group : settings.groups()) {
    if (group != settings.USERS) walk(*group);
  }
  walk(*settings.userList.items.front());
  EXPECT_GT(seen.size(), 50U);
}

TEST(SettingsHash, CountsTheOrderOfUsers) {
  const auto hashWith = [](const std::vector<std::string>& names) {
    Catalogue settings;
    for (const std::string& name : names) settings.userList.append()->NAME.value = name;
    return settingsHashOf(settings).open;
  };
  EXPECT_NE(hashWith({"anna", "bert"}), hashWith({"bert", "anna"}));
  EXPECT_NE(hashWith({"anna"}), hashWith({"anna", "anna"}));
  EXPECT_NE(hashWith({}), hashWith({""}));
  EXPECT_EQ(hashWith({"anna", "bert"}), hashWith({"anna", "bert"}));
}

TEST(SettingsHash, IsTheSameHoweverAFileSpellsTheValues) {
  const auto hashOfFile = [](const std::string& body) {
    Catalogue settings;
    std::istringstream is(body);
    (void)settings.load(is);
    return settingsHashOf(settings);
  };
  const std::string plain = "/IKE=\nIKE_PORT=501\nend=\n/LOG=\nWALL_ON=0\nend=\nend=\n";
  const std::string other =
      "  /LOG=\n   WALL_ON= 0\n end=\n/IKE=\n\t\tIKE_PORT=  0501\n\tend=\nend=\n";
  Catalogue settings;
  EXPECT_NE(hashOfFile(plain), settingsHashOf(settings));
  EXPECT_EQ(hashOfFile(plain), hashOfFile(other));
}

TEST(SettingsHash, TakesTheLockOfEachGroupBeforeThoseOfItsParameters) {
  Catalogue settings;
  const USER_t* const user = settings.userList.append();
  host::recordTakings();
  (void)settingsHashOf(settings);
  const auto taken = host::locksTaken();
  const auto positionOf = [&](const basekit::ObjectLevelLockable* lock) {
    return std::ranges::find(taken, lock) - taken.begin();
  };
  for (const ParamGroup* group : settings.groups()) {
    const ParamGroup* const members = group == settings.USERS ? user : group;
    EXPECT_LT(positionOf(group), positionOf(members->fileParams.front())) << group->name;
  }
}

// Whoever computes it without this code gets the same.
TEST(SettingsHash, IsThatOfTheLinesThatAreDocumented) {
  Catalogue settings;
  settings.ikeGroup.QCD_SECRET.value = "sesame";
  settings.userList.append()->NAME.value = "a\nb";
  std::string open;
  std::string whole;
  const auto add = [&](const std::string& group, const ParamGroup& members) {
    for (Param* param : members.fileParams) {
      const std::string value = valueText(*param);
      const std::string line =
          group + "." + param->name + "=" + std::to_string(value.size()) + ":" + value + "\n";
      if (std::string(param->name) != "QCD_SECRET") open += line;
      whole += line;
    }
  };
  for (const ParamGroup* group : settings.groups()) {
    if (group != settings.USERS) add(group->name, *group);
  }
  add("USERS", *settings.userList.items.front());
  EXPECT_EQ(settingsHashOf(settings), (SettingsHash{text::hashOf(open), text::hashOf(whole)}));
}

}  // namespace
}  // namespace schema
