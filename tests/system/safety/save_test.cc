// What a save promises, and when it is refused.
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "agent/base/exit_status.h"
#include "tests/system/safety/agent_test.h"

namespace safety {
namespace {

using agent_testing::exampleSettings;
using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class Save : public AgentTest {
 protected:
  Save() { state_.write(SETTINGS, exampleSettings()); }

  /// Expects that the save is refused and that both the client and the log are told why.
  void expectRefused(const std::string& reason, const Arguments& options = {}) {
    Arguments arguments = {"save"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const Outcome outcome = ctl(arguments);
    EXPECT_EQ(outcome.exitCode, agent::EXIT_IO);
    EXPECT_THAT(outcome.output,
                AllOf(StartsWith("lparamsctl: saving failed: "), HasSubstr(reason)));
    EXPECT_TRUE(logTells("error: settings not saved reason=\""));
    EXPECT_THAT(state("lastFailure"), HasSubstr(reason));
  }

  void expectBothHold(const std::string& text) {
    EXPECT_EQ(state_.text(SETTINGS), text);
    EXPECT_EQ(state_.unsealedText(SHADOW_COPY), text);
  }
};

TEST_F(Save, ThatWasAcknowledgedSurvivesAKill) {
  start();
  for (int port = 501; port < 505; ++port) {
    set("IKE.IKE_PORT=" + std::to_string(port));
    save();
    set("IKE.IKE_PORT=9");  // and this does not
    kill();
    expectBothHold(exampleSettings(port));
    start();
    EXPECT_EQ(get("IKE.IKE_PORT"), std::to_string(port) + "\n");
  }
  EXPECT_THAT(state_.names(), ElementsAre("history.1", "history.2", "history.3", "history.4",
                                          "history.5", SETTINGS, SHADOW_COPY));
}

TEST_F(Save, OfASettingsFileThatWasEdited) {
  start();
  set("IKE.IKE_PORT=501");
  state_.write(SETTINGS, "edited");
  for (int i = 0; i < 3; ++i) expectRefused(" was edited while the agent was running; a copy");
  EXPECT_TRUE(logTells("warning: the settings file was edited while the agent was running file=" +
                       state_.at(SETTINGS) + " kept="));
  EXPECT_EQ(state_.text(SETTINGS), "edited");
  EXPECT_EQ(state_.textOfOnly("localsettings.ini.edited-"), "edited");

  EXPECT_EQ(ctl({"save", "--force"}), (Outcome{0, "saved\n"}));
  EXPECT_TRUE(logTells("info: settings saved, forced uid="));
  expectBothHold(exampleSettings(501));
  EXPECT_EQ(state_.textOfOnly("localsettings.ini.edited-"), "edited");
  EXPECT_EQ(state("lastFailure"), "no");
}

TEST_F(Save, OfASettingsFileThatWasRemoved) {
  start();
  state_.remove(SETTINGS);
  expectRefused(" was removed while the agent was running; ");
  EXPECT_EQ(state_.text(SETTINGS), "(absent)");
  EXPECT_EQ(ctl({"save", "--force"}), (Outcome{0, "saved\n"}));
  expectBothHold(exampleSettings());
}

TEST_F(Save, WithADirectoryInTheWay) {
  start();
  set("IKE.IKE_PORT=501");
  (void)::mkdir(state_.at(BACKUP).c_str(), 0700);
  expectRefused(state_.at(BACKUP) + " cannot be removed: Is a directory");
  EXPECT_EQ(state_.text(SETTINGS), exampleSettings());
  EXPECT_EQ(state_.unsealedText(SHADOW_COPY), exampleSettings(501));
  state_.remove(BACKUP);
  save();
  expectBothHold(exampleSettings(501));
}

TEST_F(Save, ThatOutgrowsTheLimitOfAFile) {
  start();
  kill();  // the next start has nothing to write
  start({}, {.inChild = [] {
          const rlimit limit{2000, RLIM_INFINITY};
          (void)::setrlimit(RLIMIT_FSIZE, &limit);
        }});
  set("IKE.IKE_PORT=501");
  for (int i = 0; i < 3; ++i) {
    expectRefused(state_.at("localsettings.ini.good.new") + " cannot be written: File too large");
  }
  EXPECT_EQ(get("IKE.IKE_PORT"), "501\n");
  expectBothHold(exampleSettings());
  EXPECT_THAT(state_.names(), ElementsAre("history.1", SETTINGS, SHADOW_COPY));

  const rlimit enough{RLIM_INFINITY, RLIM_INFINITY};
  ASSERT_EQ(::prlimit(agent_->pid(), RLIMIT_FSIZE, &enough, nullptr), 0);
  save();
  expectBothHold(exampleSettings(501));
}

TEST_F(Save, OfSettingsThatWereNotLoadedWhole) {
  state_.write(SETTINGS, settingsWithoutGroups());
  state_.write(SHADOW_COPY, exampleSettings());
  start();
  EXPECT_THAT(log(), HasSubstr("warning: degraded: settings are served, but not saved "
                               "reason=\"the settings file lacks groups\"\n"));
  EXPECT_EQ(get("LOG.BACKUP_DEPTH"), "7\n");
  EXPECT_EQ(state("degraded"), "the settings file lacks groups");
  EXPECT_EQ(state_.textOfOnly("localsettings.ini.damaged-"), settingsWithoutGroups());

  set("LOG.BACKUP_DEPTH=8");
  expectRefused("the settings were not loaded whole (the settings file lacks groups); ");
  EXPECT_EQ(state_.text(SETTINGS), settingsWithoutGroups());
  EXPECT_EQ(state_.text(SHADOW_COPY), exampleSettings());

  EXPECT_EQ(ctl({"save", "--force"}), (Outcome{0, "saved\n"}));
  EXPECT_EQ(state("degraded"), "no");
  EXPECT_THAT(state_.text(SETTINGS), HasSubstr("BACKUP_DEPTH=8\n"));
  EXPECT_EQ(state_.unsealedText(SHADOW_COPY), state_.text(SETTINGS));
  kill();
  start();
  EXPECT_THAT(log(), Not(HasSubstr("degraded")));
}

TEST_F(Save, ADoubtfulStartMayBeRepeated) {
  state_.write(SETTINGS, settingsWithoutGroups());
  for (int i = 0; i < 2; ++i) {
    start();
    EXPECT_EQ(state("degraded"), "the settings file lacks groups");
    kill();
    EXPECT_EQ(state_.text(SETTINGS), settingsWithoutGroups());
  }
}

TEST_F(Save, DefaultsThatAnEditorHasMarkedAreNoDoubt) {
  state_.remove(SETTINGS);
  start();
  kill();
  const std::string marked = "\xEF\xBB\xBF" + state_.text(SETTINGS);
  state_.write(SETTINGS, marked);
  start();
  EXPECT_EQ(state("degraded"), "no");
  expectBothHold(marked);
}

TEST_F(Save, CorrectsWhatWasWrittenIntoTheFileByHand) {
  const std::string right = "EXCHANGE_TIMEOUT=90\n";
  std::string edited = exampleSettings();
  edited.replace(edited.find(right), right.size(), "EXCHANGE_TIMEOUT=soon\n");
  const auto correct = [&](const Arguments& command) {
    set("IKE.EXCHANGE_TIMEOUT=90");
    EXPECT_EQ(ctl(command), (Outcome{0, "saved\n"}));
    kill();
    start();
    EXPECT_EQ(state("degraded"), "no");
    EXPECT_THAT(log(), HasSubstr(" reports=0 "));
    expectBothHold(exampleSettings());
    kill();
  };
  state_.write(SETTINGS, edited);
  start();
  EXPECT_THAT(log(), HasSubstr(" reports=1 "));
  EXPECT_EQ(state("degraded"), "no");  // there is nothing that was saved
  correct({"save"});

  state_.write(SETTINGS, edited);
  start();
  expectRefused("the settings were not loaded whole");
  correct({"save", "--force"});
}

// What stands in the module's temporary file is of a save that failed: the next one removes it.
TEST_F(Save, RemovesTheTemporaryFileOfOneThatFailed) {
  start();
  state_.write(BACKUP, "the beginning of a text");
  save();
  EXPECT_EQ(state_.text(BACKUP), "the beginning of a text");  // there was nothing to write
  set("IKE.IKE_PORT=501");
  save();
  EXPECT_EQ(state_.text(BACKUP), "(absent)");
  expectBothHold(exampleSettings(501));
}

TEST_F(Save, ForceDoesNotReplaceAnEditThatCannotBeKept) {
  start();
  set("IKE.IKE_PORT=501");
  const std::string large(16 * 1024 * 1024 + 1, 'x');
  state_.write(SETTINGS, large);
  expectRefused(" was edited while the agent was running; it is too large now to be kept: move it",
                {"--force"});
  EXPECT_TRUE(state_.text(SETTINGS) == large);
  state_.remove(SETTINGS);
  EXPECT_EQ(ctl({"save", "--force"}), (Outcome{0, "saved\n"}));
  expectBothHold(exampleSettings(501));
}

TEST_F(Save, TheStateTellsOfIt) {
  start();
  EXPECT_EQ(state("changed"), "no");
  EXPECT_EQ(state("lastSave"), "no");
  EXPECT_EQ(state("lastFailure"), "no");
  EXPECT_EQ(state("degraded"), "no");
  EXPECT_EQ(state("strict"), "yes");
  EXPECT_EQ(state("stateDir"), state_.path);
  EXPECT_EQ(state("pid"), std::to_string(agent_->pid()));
  EXPECT_EQ(state("sessions"), "1");
  EXPECT_THAT(state("version"), testing::MatchesRegex("[0-9]+\\.[0-9]+\\.[0-9]+"));
  set("IKE.IKE_PORT=501");
  EXPECT_EQ(state("changed"), "yes");
  save();
  EXPECT_EQ(state("changed"), "no");
  EXPECT_THAT(state("lastSave"), testing::MatchesRegex("20..-..-..T..:..:..Z"));
}

}  // namespace
}  // namespace safety
