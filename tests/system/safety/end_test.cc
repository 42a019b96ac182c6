// How the agent ends: what becomes of unsaved changes, and what its exit status says.
#include <sys/resource.h>

#include "agent/base/exit_status.h"
#include "tests/system/safety/agent_test.h"

namespace safety {
namespace {

using agent_testing::exampleSettings;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

class End : public AgentTest {
 protected:
  End() { state_.write(SETTINGS, exampleSettings()); }
};

TEST_F(End, SavesIfThatIsWanted) {
  start({"--save-on-exit"});
  set("IKE.IKE_PORT=501");
  EXPECT_EQ(stop(), 0);
  EXPECT_EQ(state_.text(SETTINGS), exampleSettings(501));
  EXPECT_EQ(state_.unsealedText(SHADOW_COPY), exampleSettings(501));
  EXPECT_THAT(log(), Not(HasSubstr("warning")));
}

TEST_F(End, IsNoSuccessIfTheWantedSaveWasRefused) {
  start({"--save-on-exit"});
  set("IKE.IKE_PORT=501");
  state_.write(SETTINGS, "edited");
  EXPECT_EQ(stop(), agent::EXIT_IO);
  EXPECT_THAT(log(), HasSubstr("error: the changes could not be saved at the end reason=\"" +
                               state_.at(SETTINGS) + " was edited while the agent was running"));
  EXPECT_EQ(state_.text(SETTINGS), "edited");
}

TEST_F(End, IsNoSuccessIfTheSettingsWereNotLoadedWhole) {
  state_.write(SETTINGS, settingsWithoutGroups());
  start({"--save-on-exit"});
  set("IKE.IKE_PORT=501");
  EXPECT_EQ(stop(), agent::EXIT_IO);
  EXPECT_EQ(state_.text(SETTINGS), settingsWithoutGroups());
}

TEST_F(End, IsNoSuccessIfTheDiskTakesNothing) {
  start({"--save-on-exit"});
  set("IKE.IKE_PORT=501");
  const rlimit limit{10, RLIM_INFINITY};
  ASSERT_EQ(::prlimit(agent_->pid(), RLIMIT_FSIZE, &limit, nullptr), 0);
  EXPECT_EQ(stop(), agent::EXIT_IO);
  EXPECT_THAT(log(), HasSubstr(state_.at("localsettings.ini.good.new") +
                               " cannot be written: File too large"));
  EXPECT_EQ(state_.text(SETTINGS), exampleSettings());
}

TEST_F(End, IsASuccessIfThereIsNothingToSave) {
  start({"--save-on-exit"});
  EXPECT_EQ(stop(), 0);
  EXPECT_EQ(state_.text(SETTINGS), exampleSettings());
}

TEST_F(End, NamesUnsavedChanges) {
  const std::string warning = "warning: stopped with changes that were not saved and are lost\n";
  start();
  set("IKE.IKE_PORT=501");
  EXPECT_EQ(stop(), 0);
  EXPECT_THAT(log(), HasSubstr(warning));
  EXPECT_EQ(state_.text(SETTINGS), exampleSettings());

  start();
  set("IKE.IKE_PORT=501");
  save();
  EXPECT_EQ(end(SIGINT), 0);
  EXPECT_THAT(log(), AllOf(Not(HasSubstr(warning)), EndsWith("info: stopped\n")));
}

}  // namespace
}  // namespace safety
