// The whole settings file, compared with the independent table and with the example.
#include <gmock/gmock.h>

#include "tests/catalogue/expected_groups.h"
#include "tests/module/loaded_module.h"
#include "tests/support/readable_bytes.h"
#include "tests/support/recording_load_log.h"

using testing::EndsWith;
using testing::IsEmpty;
using testing_support::RecordingLoadLog;
using testing_support::unhex;

namespace host {
namespace {

using namespace LPARAMS::Server;

class GoldenFile : public ModuleTest {
 protected:
  void saveAnew() {
    root().rawSettings.clear();
    ASSERT_TRUE(root().save(nullptr));
  }

  const std::string defaults = expectedFile(initially);
  const std::string awayFromDefaults = expectedFile(whenChanged, {whenChanged, initially});
  const std::string example = readFile(SOURCE_DIR "/examples/localsettings.ini");
  RecordingLoadLog log;
};

TEST_F(GoldenFile, IsThatOfTheDefaultsForAFreshModule) {
  saveAnew();
  EXPECT_EQ(readFile(settingsPath), defaults);
}

TEST_F(GoldenFile, HoldsEveryValueOfTheBridgeAndEveryUser) {
  const ExpectedGroup& user = expectedGroup(USER_t::GROUP_NAME);
  for (const ExpectedGroup& group : expectedGroups()) {
    if (&group == &user) continue;
    EXPECT_EQ(execute(WRITE_GROUP, framed(group.name, group.record(whenChanged))).result, 1);
  }
  const std::string users =
      unhex("02 00 00 00") + user.record(whenChanged) + user.record(initially);
  EXPECT_EQ(execute(WRITE_GROUP, framed("USERS", users)).result, 1);
  saveAnew();
  const auto onTheWire = [](const ExpectedParam& param) -> const Forms& {
    return param.onWire ? param.changed : param.initial;
  };
  EXPECT_EQ(readFile(settingsPath), expectedFile(onTheWire, {onTheWire, initially}));
}

TEST_F(GoldenFile, EndsWithTheRootsEndLineAndANewline) {
  saveAnew();
  EXPECT_THAT(readFile(settingsPath), EndsWith("\n    end=\nend=\n"));
}

TEST_F(GoldenFile, HasAnEmptyListWithoutUsersAndABlockForEachUser) {
  saveAnew();
  EXPECT_THAT(readFile(settingsPath), EndsWith("    /USERS=\n"
                                               "    end=\n"
                                               "end=\n"));
  (void)module.addUser();
  saveAnew();
  EXPECT_EQ(readFile(settingsPath), expectedFile(initially, {initially}));
}

TEST_F(GoldenFile, ComesBackTheSameFromSaveLoadSave) {
  for (const std::string& text : {defaults, awayFromDefaults, example}) {
    module.reload();
    writeFile(settingsPath, text);
    EXPECT_TRUE(root().load(&log));
    EXPECT_THAT(log.reports, IsEmpty());
    EXPECT_FALSE(root().isChanged());
    saveAnew();
    EXPECT_EQ(readFile(settingsPath), text);
  }
}

}  // namespace
}  // namespace host
