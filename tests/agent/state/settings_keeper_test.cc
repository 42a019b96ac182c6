#include "agent/state/settings_keeper.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <initializer_list>

#include "agent/state/settings_completeness.h"
#include "tests/agent/state/kept_settings.h"

namespace agent {
namespace {

using agent_testing::exampleSettings;
using agent_testing::KeptSettings;
using agent_testing::SETTINGS;
using agent_testing::SHADOW_COPY;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

ino_t inodeOf(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 ? status.st_ino : 0;
}

class Keeper : public testing::Test {
 protected:
  /// The usual contents after a start or a save: settings and shadow copy with the same text.
  void expectBothHold(const std::string& text) {
    EXPECT_EQ(directory_.text(SETTINGS), text);
    EXPECT_EQ(directory_.text(SHADOW_COPY), text);
    EXPECT_EQ(directory_.mode(SETTINGS), 0600u);
    EXPECT_EQ(directory_.mode(SHADOW_COPY), 0600u);
  }

  const agent_testing::ScratchDirectory directory_;
};

TEST_F(Keeper, AFirstStartIsPlacedAtOnce) {
  KeptSettings settings(directory_);
  EXPECT_EQ(incompleteBecause(directory_.text(SETTINGS)), "");
  expectBothHold(settings.server().rawSettings);
  EXPECT_THAT(directory_.names(), ElementsAre(SETTINGS, SHADOW_COPY));
  EXPECT_FALSE(settings.server().isChanged());
  EXPECT_EQ(settings.keeper().state().lastSave, std::nullopt);
}

TEST_F(Keeper, AnImportIsPlacedAtOnce) {
  std::filesystem::copy_file(SOURCE_DIR "/examples/localsettings.xml",
                             directory_.at("localsettings.xml"));
  const std::string legacy = directory_.text("localsettings.xml");
  KeptSettings settings(directory_);
  expectBothHold(settings.server().rawSettings);
  EXPECT_THAT(directory_.text(SETTINGS), HasSubstr("PMP_SERVERS=pmp1.example.com, pmp2"));
  EXPECT_THAT(directory_.names(),
              ElementsAre(SETTINGS, SHADOW_COPY, "localsettings.xml.imported-TIME"));
  EXPECT_EQ(directory_.textOfOnly("localsettings.xml.imported-"), legacy);
}

TEST_F(Keeper, TheShadowCopyFollowsTheSettings) {
  directory_.write(SETTINGS, exampleSettings());
  { const KeptSettings settings(directory_); }
  EXPECT_EQ(directory_.text(SHADOW_COPY), exampleSettings());

  directory_.write(SETTINGS, exampleSettings(501));
  { const KeptSettings settings(directory_); }
  EXPECT_EQ(directory_.text(SHADOW_COPY), exampleSettings(501));
  EXPECT_EQ(directory_.text(SETTINGS), exampleSettings(501));

  const ino_t before = inodeOf(directory_.at(SHADOW_COPY));
  { const KeptSettings settings(directory_); }
  EXPECT_EQ(inodeOf(directory_.at(SHADOW_COPY)), before);  // not written again
}

TEST_F(Keeper, SavesTheShadowCopyAndTheSettings) {
  directory_.write(SETTINGS, exampleSettings());
  KeptSettings settings(directory_);
  for (const uint16_t port : std::initializer_list<uint16_t>{501, 502, 503}) {
    settings.setPort(port);
    EXPECT_EQ(settings.keeper().save(false), "");
    expectBothHold(exampleSettings(port));
  }
  EXPECT_THAT(directory_.names(), ElementsAre(SETTINGS, SHADOW_COPY));
  EXPECT_NE(settings.keeper().state().lastSave, std::nullopt);
  EXPECT_EQ(settings.keeper().state().lastFailure, "");
}

TEST_F(Keeper, WithoutAChangeNothingIsWritten) {
  directory_.write(SETTINGS, exampleSettings());
  KeptSettings settings(directory_);
  const ino_t before = inodeOf(directory_.at(SETTINGS));
  EXPECT_EQ(settings.keeper().save(false), "");
  EXPECT_EQ(settings.keeper().save(true), "");
  EXPECT_EQ(inodeOf(directory_.at(SETTINGS)), before);
}

TEST_F(Keeper, InDoubtNothingIsSavedUnlessForced) {
  directory_.write(SETTINGS, exampleSettings());
  directory_.write(SHADOW_COPY, exampleSettings(502));
  KeptSettings settings(directory_, "half of it is missing");
  EXPECT_EQ(directory_.textOfOnly("localsettings.ini.damaged-"), exampleSettings());
  EXPECT_EQ(settings.keeper().state().degradedReason, "half of it is missing");

  const std::string refusal =
      "the settings were not loaded whole (half of it is missing); look at them, then a forced "
      "save (lparamsctl save --force) replaces it";
  EXPECT_EQ(settings.keeper().save(false), refusal);
  settings.setPort(501);
  EXPECT_EQ(settings.keeper().save(false), refusal);
  EXPECT_EQ(settings.keeper().state().lastFailure, refusal);
  EXPECT_EQ(directory_.text(SETTINGS), exampleSettings());
  EXPECT_EQ(directory_.text(SHADOW_COPY), exampleSettings(502));  // may be the better one

  EXPECT_EQ(settings.keeper().save(true), "");
  expectBothHold(exampleSettings(501));
  EXPECT_EQ(settings.keeper().state().degradedReason, "");
  EXPECT_EQ(settings.keeper().state().lastFailure, "");
  settings.setPort(503);
  EXPECT_EQ(settings.keeper().save(false), "");
  expectBothHold(exampleSettings(503));
}

TEST_F(Keeper, AForcedSaveInDoubtWritesEvenWhatHasNotChanged) {
  const std::string odd = exampleSettings() + "\n\n";  // whole, but not what the module writes
  directory_.write(SETTINGS, odd);
  KeptSettings settings(directory_, "doubt");
  EXPECT_EQ(settings.keeper().save(true), "");
  expectBothHold(exampleSettings());
  EXPECT_EQ(directory_.textOfOnly("localsettings.ini.damaged-"), odd);
}

TEST_F(Keeper, AnEditedFileIsKeptAndNotReplaced) {
  directory_.write(SETTINGS, exampleSettings());
  KeptSettings settings(directory_);
  settings.setPort(501);
  directory_.write(SETTINGS, "edited");
  for (int i = 0; i < 3; ++i) {
    const std::string refusal = settings.keeper().save(false);
    EXPECT_THAT(refusal, StartsWith(directory_.at(SETTINGS) +
                                    " was edited while the agent was running; a copy was kept as " +
                                    directory_.at(SETTINGS) + ".edited-"));
    EXPECT_THAT(refusal, EndsWith("; a forced save (lparamsctl save --force) replaces it"));
  }
  EXPECT_EQ(directory_.textOfOnly("localsettings.ini.edited-"), "edited");  // one copy
  EXPECT_EQ(directory_.text(SETTINGS), "edited");

  directory_.write(SETTINGS, "edited again");
  EXPECT_EQ(settings.keeper().save(true), "");
  expectBothHold(exampleSettings(501));
  const auto contents = directory_.contents();
  EXPECT_THAT(contents, testing::Contains(EndsWith(": edited again")));
  EXPECT_THAT(contents, testing::Contains(EndsWith(": edited")));

  settings.setPort(502);
  EXPECT_EQ(settings.keeper().save(false), "");
  expectBothHold(exampleSettings(502));
}

TEST_F(Keeper, AnEditIsRefusedEvenIfThereIsNothingToSave) {
  directory_.write(SETTINGS, exampleSettings());
  KeptSettings settings(directory_);
  directory_.write(SETTINGS, exampleSettings(501));
  EXPECT_THAT(settings.keeper().save(false), HasSubstr(" was edited while the agent was running"));
  EXPECT_EQ(settings.keeper().save(true), "");
  expectBothHold(exampleSettings());
}

TEST_F(Keeper, AnEditTakenBackIsNoEdit) {
  directory_.write(SETTINGS, exampleSettings());
  KeptSettings settings(directory_);
  settings.setPort(501);
  directory_.write(SETTINGS, "edited");
  EXPECT_NE(settings.keeper().save(false), "");
  directory_.write(SETTINGS, exampleSettings());
  EXPECT_EQ(settings.keeper().save(false), "");
  expectBothHold(exampleSettings(501));
}

TEST_F(Keeper, ARemovedFileIsReplacedOnlyByForce) {
  directory_.write(SETTINGS, exampleSettings());
  KeptSettings settings(directory_);
  directory_.remove(SETTINGS);
  EXPECT_EQ(settings.keeper().save(false),
            directory_.at(SETTINGS) +
                " was removed while the agent was running; a forced save (lparamsctl save --force) "
                "replaces it");
  EXPECT_EQ(directory_.text(SETTINGS), "(absent)");
  EXPECT_EQ(settings.keeper().save(true), "");
  expectBothHold(exampleSettings());
  EXPECT_THAT(directory_.names(), ElementsAre(SETTINGS, SHADOW_COPY));
}

TEST_F(Keeper, AnEditThatCannotBeKeptIsNotReplacedByForceEither) {
  directory_.write(SETTINGS, exampleSettings());
  KeptSettings settings(directory_);
  settings.setPort(501);
  directory_.write(SETTINGS, std::string(MAX_SETTINGS_SIZE + 1, '#'));
  EXPECT_THAT(settings.keeper().save(true), HasSubstr("it is too large now to be kept: move it"));
  EXPECT_EQ(directory_.text(SETTINGS).size(), MAX_SETTINGS_SIZE + 1);

  directory_.remove(SETTINGS);
  (void)::mkdir(directory_.at(SETTINGS).c_str(), 0700);
  EXPECT_THAT(settings.keeper().save(true), HasSubstr("it is not a regular file"));
  EXPECT_EQ(directory_.text(SETTINGS), "(not a file)");
  EXPECT_EQ(directory_.text(SHADOW_COPY), exampleSettings());
}

}  // namespace
}  // namespace agent
