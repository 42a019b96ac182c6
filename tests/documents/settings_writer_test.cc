// The text of a backup is that of a save.
#include "documents/settings_writer.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "lparams/catalogue/catalogue.h"
#include "lparams/storage/change_detection.h"
#include "lparams/values/values.h"
#include "tests/agent/state/scratch_directory.h"

namespace documents {
namespace {

using namespace LPARAMS::Server;
using bridge::NamedValue;

void addValues(std::vector<NamedValue>& values, const std::string& owner, const ParamGroup& group) {
  for (Param* param : group.fileParams) {
    values.push_back({.name = owner + "." + param->name, .running = valueText(*param)});
  }
}

/// As the agent gives them.
std::vector<NamedValue> valuesOf(Catalogue& settings) {
  std::vector<NamedValue> values;
  for (const ParamGroup* group : settings.groups()) {
    if (group != settings.USERS) addValues(values, group->name, *group);
  }
  for (const USER_t* user : settings.USERS->items) {
    addValues(values, "USERS[" + user->NAME.value + "]", *user);
  }
  return values;
}

std::string savedText(Catalogue& settings) { return currentText(settings, 0); }

TEST(SettingsWriter, WritesWhatASaveWrites) {
  Catalogue settings;
  std::istringstream text(agent_testing::exampleSettings().substr(sizeof "/ROOT=" - 1));
  ASSERT_TRUE(settings.load(text));
  ASSERT_FALSE(settings.USERS->items.empty());
  EXPECT_EQ(settingsText(valuesOf(settings)), savedText(settings));
  setValue(listAdd(*settings.USERS)->NAME, "a].b");
  setValue(settings.IKE->QCD_SECRET, " \xff= end=");
  EXPECT_EQ(settingsText(valuesOf(settings)), savedText(settings));
}

TEST(SettingsWriter, WritesAnEmptyUserList) {
  Catalogue settings;
  EXPECT_EQ(settingsText(valuesOf(settings)), savedText(settings));
}

TEST(SettingsWriter, LeavesOutUsersWhoAreNotThereAnyMore) {
  Catalogue settings;
  auto values = valuesOf(settings);
  values.push_back({.name = "USERS[bob].NAME", .saved = "bob"});
  EXPECT_EQ(settingsText(values), savedText(settings));
}

}  // namespace
}  // namespace documents
