#include "agent/access/settings_hashes.h"

#include "tests/agent/access/named_access.h"

namespace agent {
namespace {

class SettingsHashesTest : public agent_testing::NamedAccess {
 protected:
  SettingsHashes hashes_{server(), changes_, saved_};
};

TEST_F(SettingsHashesTest, FollowWritesAndSaves) {
  const auto first = hashes_.running();
  EXPECT_EQ(hashes_.saved(), first);
  (void)set({{bridge::Change::Set, "IKE.DPD_IDLE_TIME", "77"}});
  const auto second = hashes_.running();
  EXPECT_NE(second.open, first.open);
  EXPECT_EQ(hashes_.saved(), first);
  save();
  EXPECT_EQ(hashes_.saved(), second);
  (void)set({{bridge::Change::AddUser, "anna"}});
  EXPECT_NE(hashes_.running(), second);
  (void)set({{bridge::Change::RemoveUser, "anna"}});
  EXPECT_EQ(hashes_.running(), second);
}

TEST_F(SettingsHashesTest, AreNotMadeAnewUntilSomebodyWrites) {
  const auto before = hashes_.running();
  server().IKE->IKE_PORT.value = 501;  // behind the back of the bridge
  EXPECT_EQ(hashes_.running(), before);
  (void)set({{bridge::Change::Set, "LOG.WALL_ON", "0"}});
  (void)set({{bridge::Change::Set, "LOG.WALL_ON", "1"}});
  EXPECT_NE(hashes_.running(), before);
}

TEST_F(SettingsHashesTest, AreOfSavedSettingsThatAreMadeOnceASave) {
  const auto before = saved_.current();
  EXPECT_EQ(saved_.current(), before);
  (void)set({{bridge::Change::Set, "LOG.WALL_ON", "0"}});
  save();
  EXPECT_NE(saved_.current(), before);
}

}  // namespace
}  // namespace agent
