#include "agent/state/settings_keeper.h"

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <optional>
#include <thread>

#include "agent/state/sealed_text.h"
#include "inspection/settings_completeness.h"
#include "tests/agent/state/kept_settings.h"
#include "tests/agent/state/rename_hook.h"

namespace agent {
namespace {

using agent_testing::exampleSettings;
using agent_testing::HookedRename;
using agent_testing::KeptSettings;
using agent_testing::renameReally;
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
    EXPECT_EQ(agent_testing::shadowCopyOf(directory_), text);
    EXPECT_EQ(directory_.mode(SETTINGS), 0600u);
    EXPECT_EQ(directory_.mode(SHADOW_COPY), 0600u);
  }

  const agent_testing::ScratchDirectory directory_;
};

TEST_F(Keeper, AFirstStartIsPlacedAtOnce) {
  KeptSettings settings(directory_);
  EXPECT_EQ(inspection::incompleteBecause(directory_.text(SETTINGS)), "");
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
  EXPECT_EQ(agent_testing::shadowCopyOf(directory_), exampleSettings());

  directory_.write(SETTINGS, exampleSettings(501));
  { const KeptSettings settings(directory_); }
  EXPECT_EQ(agent_testing::shadowCopyOf(directory_), exampleSettings(501));
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
  directory_.write(SHADOW_COPY, sealed(exampleSettings(502)));
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
  EXPECT_EQ(agent_testing::shadowCopyOf(directory_),
            exampleSettings(502));  // may be the better one

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
  directory_.write(SETTINGS, std::string(inspection::MAX_SETTINGS_SIZE + 1, '#'));
  EXPECT_THAT(settings.keeper().save(true), HasSubstr("it is too large now to be kept: move it"));
  EXPECT_EQ(directory_.text(SETTINGS).size(), inspection::MAX_SETTINGS_SIZE + 1);

  directory_.remove(SETTINGS);
  (void)::mkdir(directory_.at(SETTINGS).c_str(), 0700);
  EXPECT_THAT(settings.keeper().save(true), HasSubstr("it is not a regular file"));
  EXPECT_EQ(directory_.text(SETTINGS), "(not a file)");
  EXPECT_EQ(agent_testing::shadowCopyOf(directory_), exampleSettings());
}

// Legal in themselves, but no start would take the text that they make.
TEST_F(Keeper, WhatNoStartWouldAcceptIsNotWritten) {
  directory_.write(SETTINGS, exampleSettings());
  KeptSettings settings(directory_);
  std::string& text = settings.server().POLICY->PSK_NAME.value;
  const struct {
    std::string value;
    const char* reason;
  } rows[] = {{std::string(inspection::MAX_SETTINGS_SIZE, 'x'), "it is larger than 16 MiB"},
              {std::string("a\0b", 3), "it holds a zero byte"},
              {"a\n/Y=", "1 of its blocks are not closed"},
              {"a\nend=", "text follows the end of its root block"}};
  for (const auto& row : rows) {
    text = row.value;
    const std::string expected = std::string("the settings could not be read back from a file (") +
                                 row.reason + "); nothing was written";
    EXPECT_EQ(settings.keeper().save(false), expected);
    EXPECT_EQ(settings.keeper().save(true), expected);
    expectBothHold(exampleSettings());
  }
  text = "short";
  EXPECT_EQ(settings.keeper().save(false), "");
  expectBothHold(settings.server().rawSettings);
}

TEST_F(Keeper, ASaveLooksAtTheShadowCopyToo) {
  directory_.write(SETTINGS, exampleSettings());
  KeptSettings settings(directory_);
  const std::string whole = directory_.text(SHADOW_COPY);
  for (const std::string& found : {std::string("(absent)"), std::string(), whole.substr(0, 500),
                                   sealed(exampleSettings(502)), whole + "more"}) {
    directory_.remove(SHADOW_COPY);
    if (found != "(absent)") directory_.write(SHADOW_COPY, found);
    EXPECT_EQ(settings.keeper().save(false), "");
    EXPECT_EQ(directory_.text(SHADOW_COPY), whole);
  }
}

std::string withPort(const std::string& port) {
  std::string text = exampleSettings();
  const std::string line = "IKE_PORT=500\n";
  return text.replace(text.find(line), line.size(), "IKE_PORT=" + port + "\n");
}

TEST_F(Keeper, AfterASaveTheFileHoldsWhatTheMemoryHolds) {
  directory_.write(SETTINGS, withPort("70000"));
  KeptSettings settings(directory_);
  EXPECT_FALSE(settings.server().isChanged());
  EXPECT_EQ(directory_.text(SETTINGS), withPort("70000"));
  EXPECT_EQ(settings.keeper().save(false), "");
  expectBothHold(exampleSettings());
  EXPECT_EQ(directory_.textOfOnly("localsettings.ini.asfound-"), withPort("70000"));
}

TEST_F(Keeper, WhatALoadDropsIsKeptBeforeTheFileIsReplaced) {
  std::string found = exampleSettings();
  found.insert(found.find("    /IKE="), "    # a note=of mine\n    UNKNOWN=1\n");
  directory_.write(SETTINGS, found);
  KeptSettings settings(directory_);
  settings.setPort(501);
  EXPECT_EQ(directory_.textOfOnly("localsettings.ini.asfound-"), "(0 such files)");
  EXPECT_EQ(settings.keeper().save(false), "");
  expectBothHold(exampleSettings(501));
  EXPECT_EQ(directory_.textOfOnly("localsettings.ini.asfound-"), found);
  settings.setPort(502);
  EXPECT_EQ(settings.keeper().save(false), "");
  EXPECT_EQ(directory_.textOfOnly("localsettings.ini.asfound-"), found);  // kept once
}

TEST_F(Keeper, AnEditIsLoadedAndTheFormerTextKept) {
  directory_.write(SETTINGS, exampleSettings(501));
  directory_.write(SHADOW_COPY, sealed(exampleSettings(500)));
  KeptSettings settings(directory_);
  EXPECT_EQ(settings.keeper().state().degradedReason, "");
  expectBothHold(exampleSettings(501));
  EXPECT_EQ(directory_.textOfOnly("localsettings.ini.former-"), exampleSettings(500));
}

TEST_F(Keeper, AFileThatIsNotTheLastSaveAndGivesReportsKeepsTheShadowCopy) {
  directory_.write(SETTINGS, withPort("5x1"));
  directory_.write(SHADOW_COPY, sealed(exampleSettings(500)));
  KeptSettings settings(directory_);
  EXPECT_EQ(settings.keeper().state().degradedReason,
            "the settings file is not what was saved last, which " + directory_.at(SHADOW_COPY) +
                " holds, and it was loaded with reports");
  EXPECT_EQ(agent_testing::shadowCopyOf(directory_), exampleSettings(500));
  EXPECT_NE(settings.keeper().save(false), "");
  EXPECT_EQ(directory_.text(SETTINGS), withPort("5x1"));

  EXPECT_EQ(settings.keeper().save(true), "");
  expectBothHold(settings.server().rawSettings);
  EXPECT_EQ(directory_.textOfOnly("localsettings.ini.former-"), exampleSettings(500));
  EXPECT_EQ(directory_.textOfOnly("localsettings.ini.damaged-"), withPort("5x1"));
}

// The shadow copy may hold the only good settings, whatever became of the file since.
TEST_F(Keeper, AForcedSaveOverAnEditKeepsWhatTheShadowCopyHeld) {
  directory_.write(SETTINGS, withPort("5x1"));
  directory_.write(SHADOW_COPY, sealed(exampleSettings(502)));
  KeptSettings settings(directory_);
  directory_.write(SETTINGS, "edited");
  EXPECT_EQ(settings.keeper().save(true), "");
  expectBothHold(settings.server().rawSettings);
  EXPECT_EQ(directory_.textOfOnly("localsettings.ini.former-"), exampleSettings(502));
  EXPECT_EQ(directory_.textOfOnly("localsettings.ini.edited-"), "edited");
}

TEST_F(Keeper, ABrokenShadowCopyIsMadeAnewAndIsNoReasonToDoubtTheFile) {
  std::string broken = sealed(exampleSettings());
  broken[200] = '~';
  directory_.write(SETTINGS, withPort("5x1"));
  directory_.write(SHADOW_COPY, broken);
  KeptSettings settings(directory_);
  EXPECT_EQ(settings.keeper().state().degradedReason, "");
  EXPECT_EQ(agent_testing::shadowCopyOf(directory_), withPort("5x1"));
}

TEST_F(Keeper, AStartSaysThatTheShadowCopyIsDamaged) {
  const std::string whole = sealed(exampleSettings());
  std::string inText = whole;
  inText[200] = '~';
  std::string inSeal = whole;
  inSeal[whole.rfind('#')] = '"';  // so that there seems to be none
  for (const auto& [found, damage] : {std::pair(whole, ""),
                                      {exampleSettings(), ""},
                                      {inText, "its checksum does not fit"},
                                      {inSeal, "text follows the end of its root block"}}) {
    directory_.write(SETTINGS, exampleSettings());
    directory_.write(SHADOW_COPY, found);
    testing::internal::CaptureStderr();
    { const KeptSettings settings(directory_); }
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(agent_testing::shadowCopyOf(directory_), exampleSettings());
    const std::string words =
        "warning: the shadow copy is damaged file=" + directory_.at(SHADOW_COPY) + " damage=\"" +
        damage + "\"\n";
    EXPECT_EQ(said.find(words) != said.npos, *damage != '\0') << said << damage;
  }
}

/// No byte can be written to a file while this lives.
class FullDisk {
 public:
  FullDisk() {
    (void)std::signal(SIGXFSZ, SIG_IGN);
    (void)::getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit none{0, before_.rlim_max};
    (void)::setrlimit(RLIMIT_FSIZE, &none);
  }
  ~FullDisk() { (void)::setrlimit(RLIMIT_FSIZE, &before_); }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;

 private:
  rlimit before_{};
};

TEST_F(Keeper, ACompleteFileIsServedWhateverTheDiskSays) {
  directory_.write(SETTINGS, exampleSettings());
  std::optional<FullDisk> full(std::in_place);
  KeptSettings settings(directory_);
  EXPECT_EQ(settings.server().POLICY->PMP_TIMEOUT.value, 30u);
  EXPECT_EQ(settings.keeper().state().degradedReason, "");
  EXPECT_THAT(settings.keeper().state().disk, StartsWith(directory_.at(SHADOW_COPY) + ".new"));
  EXPECT_NE(settings.keeper().save(false), "");
  EXPECT_EQ(directory_.text(SETTINGS), exampleSettings());

  full.reset();
  EXPECT_EQ(settings.keeper().save(false), "");
  EXPECT_EQ(settings.keeper().state().disk, "");
  expectBothHold(exampleSettings());
}

TEST_F(Keeper, ADegradedFileIsServedWhateverTheDiskSays) {
  directory_.write(SETTINGS, exampleSettings());
  const FullDisk full;
  KeptSettings settings(directory_, "half of it is missing");
  EXPECT_EQ(settings.keeper().state().degradedReason, "half of it is missing");
  EXPECT_THAT(settings.keeper().state().disk, HasSubstr("damaged-"));
}

TEST_F(Keeper, OldCopiesAreForgottenAfterASave) {
  directory_.write(SETTINGS, exampleSettings());
  KeptSettings settings(directory_);
  for (int i = 10; i < 40; ++i) {
    directory_.write("localsettings.ini.edited-202611" + std::to_string(i) + "T000000Z",
                     std::to_string(i));
  }
  settings.setPort(501);
  EXPECT_EQ(settings.keeper().save(false), "");
  EXPECT_EQ(directory_.names().size(), 2u + 20u);
}

// A text that is saved is one of between two commands, never of the middle of one.
TEST_F(Keeper, TheShadowCopyIsNeverAMixtureOfTwoStates) {
  KeptSettings settings(directory_);
  std::jthread writer([&](const std::stop_token& stop) {
    for (unsigned short port = 1000; !stop.stop_requested();
         port = port < 60000 ? port + 1 : 1000) {
      const std::lock_guard turn(settings.keeper().writeTurn());
      for (auto* param : {&settings.server().IKE->IKE_PORT, &settings.server().IKE->NATT_PORT}) {
        const basekit::ObjectLevelLockable::Lock lock(*param);
        param->value = port;
      }
    }
  });
  const auto portOf = [](const std::string& text, const std::string& name) {
    const size_t at = text.find(" " + name + "=") + name.size() + 2;
    return text.substr(at, text.find('\n', at) - at);
  };
  const HookedRename hooked([&](const std::string& from, const std::string& to) {
    const std::string text = unsealed(directory_.text(from.substr(from.rfind('/') + 1))).text;
    EXPECT_EQ(portOf(text, "IKE_PORT"), portOf(text, "NATT_PORT")) << to;
    return renameReally(from, to);
  });
  for (int i = 0; i < 50; ++i) EXPECT_EQ(settings.keeper().save(false), "");
}

}  // namespace
}  // namespace agent
