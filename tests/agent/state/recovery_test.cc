#include "agent/state/recovery.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <ctime>
#include <filesystem>
#include <stdexcept>

#include "agent/state/sealed_text.h"
#include "inspection/settings_completeness.h"
#include "markup/tree.h"
#include "tests/agent/state/kept_settings.h"
#include "tests/agent/state/scratch_directory.h"

namespace agent {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

using agent_testing::BACKUP;
using agent_testing::SETTINGS;
using agent_testing::SHADOW_COPY;

std::string wholeText(const std::string& marker) {
  return "/ROOT=\n    FROM=" + marker + "\nend=\n";
}

std::string damagedText(const std::string& marker) { return "/ROOT=\n    FROM=" + marker; }

/// The letters of a row: - for no such file, W for a whole one, D for a damaged one.
void put(const agent_testing::ScratchDirectory& directory, const std::string& name, char letter) {
  directory.remove(name);
  if (letter == 'W') directory.write(name, wholeText(name));
  if (letter == 'D') directory.write(name, damagedText(name));
}

/// What prepareStart throws; empty if it does not.
std::string refusalOf(const StateDirectory& state, bool allowDefaults = false) {
  try {
    (void)prepareStart(state, allowDefaults);
    return {};
  } catch (const std::exception& error) {
    return error.what();
  }
}

/// The files of one row. A new directory for each row, so that nothing is left of the one before.
struct Row {
  explicit Row(const std::string& letters) {
    put(directory, SETTINGS, letters[0]);
    put(directory, SHADOW_COPY, letters[1]);
    put(directory, BACKUP, letters[2]);
  }

  const agent_testing::ScratchDirectory directory;
  const StateDirectory state{directory.path};
};

TEST(Recovery, ChoosesACompleteFile) {
  // The letters are those of the settings, the shadow copy and the backup.
  const struct {
    const char* before;
    const char* chosen;
    const char* after;
    StartingPoint::Source source;
  } rows[] = {
      // Whole settings are used, and nothing else is looked at.
      {"W--", SETTINGS, "W--", StartingPoint::Settings},
      {"W-W", SETTINGS, "W-W", StartingPoint::Settings},
      {"W-D", SETTINGS, "W-D", StartingPoint::Settings},
      {"WW-", SETTINGS, "WW-", StartingPoint::Settings},
      {"WWW", SETTINGS, "WWW", StartingPoint::Settings},
      {"WWD", SETTINGS, "WWD", StartingPoint::Settings},
      {"WD-", SETTINGS, "WD-", StartingPoint::Settings},
      {"WDW", SETTINGS, "WDW", StartingPoint::Settings},
      {"WDD", SETTINGS, "WDD", StartingPoint::Settings},
      // Then the shadow copy, then the backup. What is damaged is moved aside.
      {"-W-", SHADOW_COPY, "WW-", StartingPoint::Recovered},
      {"-WW", SHADOW_COPY, "WWW", StartingPoint::Recovered},
      {"-WD", SHADOW_COPY, "WW-", StartingPoint::Recovered},
      {"DW-", SHADOW_COPY, "WW-", StartingPoint::Recovered},
      {"DWW", SHADOW_COPY, "WWW", StartingPoint::Recovered},
      {"DWD", SHADOW_COPY, "WW-", StartingPoint::Recovered},
      {"--W", BACKUP, "W-W", StartingPoint::Recovered},
      {"-DW", BACKUP, "W-W", StartingPoint::Recovered},
      {"D-W", BACKUP, "W-W", StartingPoint::Recovered},
      {"DDW", BACKUP, "W-W", StartingPoint::Recovered},
      {"---", "", "---", StartingPoint::FirstStart},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.before);
    const Row files(row.before);
    const StartingPoint start = prepareStart(files.state, false);
    EXPECT_EQ(start.source, row.source);
    const std::string chosen = *row.chosen == '\0' ? "" : wholeText(row.chosen);
    EXPECT_EQ(start.text, chosen);

    const char* const names[] = {SETTINGS, SHADOW_COPY, BACKUP};
    for (int i = 0; i < 3; ++i) {
      const std::string name = names[i];
      const bool placed = i == 0 && row.source == StartingPoint::Recovered;
      std::string expected = "(absent)";
      if (row.after[i] == 'W') expected = placed ? chosen : wholeText(name);
      if (row.after[i] == 'D') expected = damagedText(name);
      EXPECT_EQ(files.directory.text(name), expected) << name;

      const bool moved = row.before[i] == 'D' && row.after[i] != 'D';
      EXPECT_EQ(files.directory.textOfOnly(name + ".damaged-"),
                moved ? damagedText(name) : "(0 such files)");
    }
    if (row.source == StartingPoint::Recovered) {
      EXPECT_EQ(files.directory.mode(SETTINGS), 0600u);
    }
  }
}

TEST(Recovery, DoesNotStartOnDefaultsByItself) {
  for (const std::string before : {"D--", "-D-", "--D", "DD-", "D-D", "-DD", "DDD"}) {
    SCOPED_TRACE(before);
    const Row files(before);
    const auto untouched = files.directory.contents();
    const std::string refusal = refusalOf(files.state);
    const char* const names[] = {SETTINGS, SHADOW_COPY, BACKUP};
    std::string expected = "no complete settings in " + files.directory.path + ":";
    for (size_t i = 0; i < 3; ++i) {
      if (before[i] != 'D') continue;
      expected += " " + files.directory.at(names[i]) + " (1 of its blocks are not closed)";
    }
    EXPECT_EQ(refusal, expected + "; repair one, or start with --allow-defaults");
    EXPECT_EQ(files.directory.contents(), untouched);

    EXPECT_EQ(prepareStart(files.state, true).source, StartingPoint::FirstStart);
    for (size_t i = 0; i < 3; ++i) {
      EXPECT_EQ(files.directory.text(names[i]), "(absent)");
      const std::string kept = files.directory.textOfOnly(std::string(names[i]) + ".damaged-");
      EXPECT_EQ(kept, before[i] == 'D' ? damagedText(names[i]) : "(0 such files)");
    }
  }
}

TEST(Recovery, DefaultsMayBeAllowedWhereTheyAreNotNeeded) {
  const Row whole("WWW");
  EXPECT_EQ(prepareStart(whole.state, true).source, StartingPoint::Settings);
  const Row shadowCopy("DW-");
  EXPECT_EQ(prepareStart(shadowCopy.state, true).source, StartingPoint::Recovered);
}

TEST(Recovery, AnEmptyFileAndOneThatIsTooLargeAreDamaged) {
  for (const std::string& text :
       {std::string(), std::string(inspection::MAX_SETTINGS_SIZE + 1, '\n')}) {
    const Row files("-W-");
    files.directory.write(SETTINGS, text);
    EXPECT_EQ(prepareStart(files.state, false).text, wholeText(SHADOW_COPY));
    EXPECT_TRUE(files.directory.textOfOnly("localsettings.ini.damaged-") == text);
  }
}

TEST(Recovery, AFileOverTheLimitIsNotJudgedByItsBeginning) {
  const std::string text = wholeText("a large file");
  const std::string filler(inspection::MAX_SETTINGS_SIZE - text.size(), '\n');
  for (const char* name : {SETTINGS, SHADOW_COPY, BACKUP}) {
    SCOPED_TRACE(name);
    const Row files("---");
    files.directory.write(name, text + filler);
    EXPECT_TRUE(prepareStart(files.state, false).text == text + filler);
    const Row tooLarge("---");
    tooLarge.directory.write(name, text + filler + "\n");
    EXPECT_THAT(refusalOf(tooLarge.state), HasSubstr(" (it is larger than 16 MiB)"));
  }
}

TEST(Recovery, AShadowCopyIsJudgedByItsSeal) {
  const std::string whole = wholeText("a save");
  std::string broken = sealed(whole);
  broken[broken.find("save")] = 'S';
  const Row intact("D--");
  intact.directory.write(SHADOW_COPY, sealed(whole));
  EXPECT_EQ(prepareStart(intact.state, false).text, whole);
  EXPECT_EQ(intact.directory.text(SETTINGS), whole);
  EXPECT_EQ(readShadowCopy(intact.state), whole);

  const Row damaged("D-W");
  damaged.directory.write(SHADOW_COPY, broken);
  EXPECT_EQ(readShadowCopy(damaged.state), std::nullopt);
  EXPECT_EQ(prepareStart(damaged.state, false).text, wholeText(BACKUP));

  const Row alone("D--");
  alone.directory.write(SHADOW_COPY, broken);
  EXPECT_THAT(refusalOf(alone.state),
              HasSubstr(alone.directory.at(SHADOW_COPY) + " (its checksum does not fit)"));
}

TEST(Recovery, FilesBecomeTheAgentsAlone) {
  const Row files("WWW");
  for (const char* name : {SETTINGS, SHADOW_COPY, BACKUP}) {
    ASSERT_EQ(::chmod(files.directory.at(name).c_str(), 0666), 0);
  }
  (void)prepareStart(files.state, false);
  for (const char* name : {SETTINGS, SHADOW_COPY, BACKUP}) {
    EXPECT_EQ(files.directory.mode(name), 0600u) << name;
  }
}

TEST(Recovery, FilesThatAreTheAgentsAloneAreLeftAsTheyAre) {
  const Row files("W--");
  struct stat before {};
  struct stat after {};
  ASSERT_EQ(::chmod(files.directory.at(SETTINGS).c_str(), 0600), 0);
  ASSERT_EQ(::stat(files.directory.at(SETTINGS).c_str(), &before), 0);
  timespec now{};
  do {
    (void)::clock_gettime(CLOCK_REALTIME_COARSE, &now);  // the clock of a file's times
  } while (now.tv_sec == before.st_ctim.tv_sec && now.tv_nsec == before.st_ctim.tv_nsec);
  (void)prepareStart(files.state, false);
  ASSERT_EQ(::stat(files.directory.at(SETTINGS).c_str(), &after), 0);
  EXPECT_EQ(after.st_ctim.tv_sec, before.st_ctim.tv_sec);
  EXPECT_EQ(after.st_ctim.tv_nsec, before.st_ctim.tv_nsec);
}

TEST(Recovery, WhatIsKeptIsNeverOverwritten) {
  const Row files("-W-");
  for (const std::string damage : {"one", "two", "three"}) {
    files.directory.write(SETTINGS, damage);
    (void)prepareStart(files.state, false);
  }
  // The names hold the second, so two may be alike or not.
  const auto contents = files.directory.contents();
  for (const std::string damage : {": one", ": two", ": three"}) {
    EXPECT_THAT(contents, Contains(AllOf(HasSubstr(".damaged-"), testing::EndsWith(damage))));
  }
}

TEST(Recovery, WhatCannotBeReadStopsTheStartWithNothingTouched) {
  const char* const notRegular = "cannot be used: it is not a regular file";
  for (const std::string name : {SETTINGS, SHADOW_COPY, BACKUP}) {
    SCOPED_TRACE(name);
    const Row files("DDW");
    files.directory.remove(name);
    (void)::mkdir(files.directory.at(name).c_str(), 0700);
    auto untouched = files.directory.contents();
    EXPECT_THAT(refusalOf(files.state, true),
                HasSubstr(files.directory.at(name) + " " + notRegular));
    EXPECT_EQ(files.directory.contents(), untouched);

    files.directory.remove(name);
    std::filesystem::create_symlink("elsewhere", files.directory.at(name));
    files.directory.write("elsewhere", wholeText("elsewhere"));
    untouched = files.directory.contents();
    EXPECT_THAT(refusalOf(files.state, true), HasSubstr(files.directory.at(name) + " cannot be"));
    EXPECT_EQ(files.directory.contents(), untouched);
  }
}

class LegacyRecovery : public testing::Test {
 protected:
  const agent_testing::ScratchDirectory directory_;
  const StateDirectory state_{directory_.path};
};

TEST_F(LegacyRecovery, KeepsTheFileWhileItIsImported) {
  directory_.write("localsettings.xml", "<old/>");
  keepLegacySettings(state_);
  EXPECT_THAT(directory_.contents(),
              ElementsAre("localsettings.xml: <old/>", "localsettings.xml.importing: <old/>"));
  EXPECT_EQ(directory_.mode("localsettings.xml.importing"), 0600u);

  directory_.remove("localsettings.xml");  // as the module does
  finishImport(state_);
  EXPECT_THAT(directory_.names(), ElementsAre("localsettings.xml.imported-TIME"));
  EXPECT_EQ(directory_.textOfOnly("localsettings.xml.imported-"), "<old/>");
}

TEST_F(LegacyRecovery, AnImportThatWasCutShortComesBack) {
  directory_.write("localsettings.xml.importing", "<old/>");
  keepLegacySettings(state_);
  EXPECT_THAT(directory_.contents(),
              ElementsAre("localsettings.xml: <old/>", "localsettings.xml.importing: <old/>"));
  keepLegacySettings(state_);  // cut short again, before the module has deleted its file
  EXPECT_THAT(directory_.contents(),
              ElementsAre("localsettings.xml: <old/>", "localsettings.xml.importing: <old/>"));
}

TEST_F(LegacyRecovery, ANewerFileDoesNotPushOutTheOneOfAnInterruptedImport) {
  directory_.write("localsettings.xml.importing", "<interrupted/>");
  directory_.write("localsettings.xml", "<newer/>");
  keepLegacySettings(state_);
  EXPECT_EQ(directory_.text("localsettings.xml"), "<newer/>");
  EXPECT_EQ(directory_.text("localsettings.xml.importing"), "<newer/>");
  EXPECT_EQ(directory_.textOfOnly("localsettings.xml.imported-"), "<interrupted/>");
}

TEST_F(LegacyRecovery, WithoutAnOldFileThereIsNothingToDo) {
  keepLegacySettings(state_);
  finishImport(state_);
  EXPECT_THAT(directory_.names(), ElementsAre());
}

// The parser refuses it, and the module deletes it.
TEST_F(LegacyRecovery, ADocumentThatIsTooLargeIsKeptWhole) {
  const std::string large(markup::MAX_SIZE + 1, ' ');
  directory_.write("localsettings.xml", large);
  EXPECT_TRUE(keepLegacySettings(state_));
  EXPECT_TRUE(directory_.text("localsettings.xml.importing") == large);
  EXPECT_EQ(directory_.mode("localsettings.xml.importing"), 0600u);

  directory_.remove("localsettings.xml");  // as the module does
  EXPECT_TRUE(keepLegacySettings(state_));
  EXPECT_TRUE(directory_.text("localsettings.xml") == large);
  EXPECT_TRUE(keepLegacySettings(state_));  // cut short again
  EXPECT_THAT(directory_.names(), ElementsAre("localsettings.xml", "localsettings.xml.importing"));

  directory_.write("localsettings.xml", "<newer/>");
  EXPECT_TRUE(keepLegacySettings(state_));
  EXPECT_EQ(directory_.text("localsettings.xml.importing"), "<newer/>");
  EXPECT_TRUE(directory_.textOfOnly("localsettings.xml.imported-") == large);
}

TEST_F(LegacyRecovery, ADocumentOfTheLargestSizeIsKeptOnce) {
  const std::string large(1'048'576, ' ');
  directory_.write("localsettings.xml.imported-20260101T000000Z", large);
  directory_.write("localsettings.xml.importing", large);
  directory_.write("localsettings.xml", "<newer/>");
  EXPECT_TRUE(keepLegacySettings(state_));
  EXPECT_TRUE(directory_.textOfOnly("localsettings.xml.imported-") == large);
}

TEST_F(LegacyRecovery, WhatCannotBeKeptStopsTheStart) {
  (void)::mkdir(directory_.at("localsettings.xml").c_str(), 0700);
  EXPECT_THROW(keepLegacySettings(state_), std::system_error);
  EXPECT_THAT(directory_.names(), ElementsAre("localsettings.xml"));
}

}  // namespace
}  // namespace agent
