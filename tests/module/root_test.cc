// The settings root as the agent finds it, and the path of its file.
#include <gmock/gmock.h>

#include <sstream>

#include "tests/module/call_log.h"
#include "tests/module/loaded_module.h"
#include "tests/support/readable_bytes.h"
#include "tests/support/recording_load_log.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing_support::RecordingLoadLog;
using testing_support::unhex;

namespace host {
namespace {

using LPARAMS::Server::Param;
using LPARAMS::Server::USER_t;
using UserList = LPARAMS::Server::ParamVector<USER_t>;

std::vector<std::string> namesOf(const std::list<Param*>& params) {
  std::vector<std::string> names;
  for (const Param* param : params) names.emplace_back(param->name);
  return names;
}

class Root : public ModuleTest {};

TEST_F(Root, HoldsItsGroupsInTheOrderOfTheFile) {
  EXPECT_STREQ(root().name, "ROOT");
  EXPECT_EQ(root().getTypeId(), LPARAMS::Server::TYPE_GROUP);
  EXPECT_THAT(namesOf(root().fileParams),
              ElementsAre("IKE", "LOG", "UPDATE", "POLICY", "ADMIN", "USERS"));
}

TEST_F(Root, HasTheUserListAloneOnTheWire) {
  EXPECT_THAT(namesOf(root().wireParams), ElementsAre("USERS"));
  std::string bytes;
  LPARAMS::Server::CommandStreamOut out{bytes};
  EXPECT_TRUE(root().write(out));
  EXPECT_EQ(bytes, unhex("00 00 00 00"));
}

TEST_F(Root, FindsItsMembersByNameButNotItself) {
  EXPECT_EQ(root().getParam("IKE"), root().IKE);
  EXPECT_EQ(root().getParam("LOG"), root().LOG);
  EXPECT_EQ(root().getParam("UPDATE"), root().UPDATE);
  EXPECT_EQ(root().getParam("POLICY"), root().POLICY);
  EXPECT_EQ(root().getParam("ADMIN"), root().ADMIN);
  EXPECT_EQ(root().getParam("USERS"), root().USERS);
  EXPECT_EQ(root().getParam("ROOT"), nullptr);
  EXPECT_EQ(root().getParam("users"), nullptr);
}

TEST_F(Root, StartsWithoutUsersObserversHookAndSnapshot) {
  EXPECT_THAT(root().USERS->items, IsEmpty());
  EXPECT_THAT(root().observers, IsEmpty());
  for (Param* member : root().fileParams) {
    EXPECT_THAT(static_cast<LPARAMS::Server::ParamGroup*>(member)->observers, IsEmpty());
  }
  EXPECT_EQ(root().saveHook, nullptr);
  EXPECT_EQ(root().rawSettings, "");
}

TEST_F(Root, LetsTheAgentChangeTheUserListByTheExportedFunctions) {
  auto* del = module.function<void(UserList&, USER_t*)>(
      "_ZN7LPARAMS6Server7listDelERNS0_11ParamVectorINS0_6USER_tEEEPS2_");
  auto* clear = module.function<void(UserList&)>(
      "_ZN7LPARAMS6Server9listClearERNS0_11ParamVectorINS0_6USER_tEEE");

  UserList& users = *root().USERS;
  USER_t* const anna = module.addUser();
  USER_t* const boris = module.addUser();
  EXPECT_THAT(users.items, ElementsAre(anna, boris));
  anna->NAME.value = "anna";
  boris->NAME.value = "boris";

  del(users, anna);
  EXPECT_THAT(users.items, ElementsAre(boris));
  EXPECT_EQ(execute(READ_GROUP, framed("USERS")).output.substr(0, 13),
            unhex("01 00 00 00  05 00 00 00") + "boris");
  clear(users);
  EXPECT_THAT(users.items, IsEmpty());
}

// The path of the settings file.

TEST_F(Root, AsksForTheDirectoryOnceAndKeepsThePath) {
  RecordingLoadLog log;
  const auto calls = callsDuring([&] {
    EXPECT_TRUE(root().save(nullptr));
    platform().varDir = "/nonexistent/";
    EXPECT_TRUE(root().load(&log));
    root().IKE->IKE_PORT.value = 501;
    EXPECT_TRUE(root().save(nullptr));
  });
  EXPECT_EQ(std::count(calls.begin(), calls.end(), "systemVarDir"), 1);
  EXPECT_THAT(readFile(settingsPath), testing::HasSubstr("IKE_PORT=501\n"));
}

TEST_F(Root, DoesNotAskForTheDirectoryBeforeItIsNeeded) {
  EXPECT_THAT(callsDuring([&] {
                EXPECT_TRUE(root().isChanged());
                EXPECT_EQ(execute(READ_GROUP, framed("IKE")).result, 1);
              }),
              IsEmpty());
}

TEST_F(Root, GluesTheFileNameToADirectoryWithoutAFinalSlash) {
  platform().varDir = directory.path + "var";
  std::string error;
  EXPECT_TRUE(root().save(&error));
  EXPECT_EQ(error, "file: " + directory.path + "varlocalsettings.ini");
  EXPECT_TRUE(exists(directory.path + "varlocalsettings.ini"));
}

}  // namespace
}  // namespace host
