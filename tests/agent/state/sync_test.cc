// What is synced, and in which order: a file before it gets its name, the directory behind that.
#include <gmock/gmock.h>

#include <filesystem>

#include "agent/state/durable_file.h"
#include "tests/agent/state/kept_settings.h"
#include "tests/agent/state/rename_hook.h"
#include "tests/support/sync_record.h"

namespace agent {
namespace {

using agent_testing::HookedRename;
using testing::ElementsAre;
using testing_support::recordSyncs;
using testing_support::syncs;

class Sync : public testing::Test {
 protected:
  const agent_testing::ScratchDirectory directory_;
  const std::string place_ = std::filesystem::path(directory_.path).filename();
  const HookedRename hooked_{[](const std::string& from, const std::string& to) {
    testing_support::note("rename to " + std::filesystem::path(to).filename().string());
    return agent_testing::renameReally(from, to);
  }};
};

TEST_F(Sync, OfAFileThatIsMadeReplacedOrMoved) {
  const std::string file = directory_.at("file");
  recordSyncs();
  replaceFileAtomically(file, "text");
  EXPECT_THAT(syncs(), ElementsAre("file.new", "rename to file", place_));
  recordSyncs();
  (void)writeNewFile(directory_.at("copy"), "text");
  EXPECT_THAT(syncs(), ElementsAre("copy", place_));
  recordSyncs();
  syncFile(file);
  EXPECT_THAT(syncs(), ElementsAre("file", place_));
  recordSyncs();
  (void)moveAside(file, directory_.at("aside"));
  EXPECT_THAT(syncs(), ElementsAre(place_));
  recordSyncs();
  removeFile(directory_.at("aside"));
  EXPECT_THAT(syncs(), ElementsAre(place_));
}

TEST_F(Sync, OfASave) {
  directory_.write(agent_testing::SETTINGS, agent_testing::exampleSettings());
  agent_testing::KeptSettings settings(directory_);
  settings.setPort(501);
  recordSyncs();
  EXPECT_EQ(settings.keeper().save(false), "");
  EXPECT_THAT(syncs(),
              ElementsAre("localsettings.ini.good.new", "rename to localsettings.ini.good", place_,
                          "rename to localsettings.ini", "localsettings.ini", place_));
}

}  // namespace
}  // namespace agent
