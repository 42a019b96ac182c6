// How the agent starts, and when it does not.
#include <sched.h>
#include <unistd.h>

#include "agent/base/exit_status.h"
#include "tests/support/another_user.h"
#include "tests/support/private_mounts.h"
#include "tests/support/system_directory.h"
#include "tests/support/user_namespace.h"
#include "tests/system/safety/agent_test.h"

namespace safety {
namespace {

using agent_testing::exampleSettings;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

using Start = AgentTest;

TEST_F(Start, WrongCommandLines) {
  for (const Arguments& options : {Arguments{"--no-such-option"},
                                   {"--max-users", "many"},
                                   {"--max-users", "-1"},
                                   {"--socket"},
                                   {"word"}}) {
    const Outcome outcome = runAgent(options);
    EXPECT_EQ(outcome.exitCode, agent::EXIT_USAGE) << options.front();
    EXPECT_THAT(outcome.output, AllOf(StartsWith("lparams_agent: error: "),
                                      HasSubstr(" (see lparams_agent --help)\n")));
  }
  EXPECT_EQ(runAgent({"--help"}).exitCode, 0);
  EXPECT_EQ(runAgent({"--version"}).exitCode, 0);
  EXPECT_TRUE(state_.names().empty());
}

TEST_F(Start, WithoutItsModule) {
  state_.write(SETTINGS, exampleSettings());
  const std::string absent = place_.at("absent.so");
  EXPECT_EQ(runAgent({"--module", absent}),
            (Outcome{agent::EXIT_UNAVAILABLE,
                     "lparams_agent: error: module " + absent + " cannot be loaded: " + absent +
                         ": cannot open shared object file: No such file or directory\n"}));
  const Outcome another = runAgent({"--module", "libm.so.6"});
  EXPECT_EQ(another.exitCode, agent::EXIT_UNAVAILABLE);
  EXPECT_THAT(another.output, HasSubstr("module libm.so.6 is not the settings module: "));
  EXPECT_EQ(state_.text(SETTINGS), exampleSettings());
}

TEST_F(Start, SocketsThatCannotBeUsed) {
  place_.write("file", "");
  (void)::mkdir(place_.at("open").c_str(), 0700);
  (void)::chmod(place_.at("open").c_str(), 0755);
  (void)::mkdir(place_.at("private").c_str(), 0700);
  place_.write("private/file", "");
  const std::string tooLong = place_.at(std::string(100, 'x'));
  const struct {
    std::string path;
    std::string reason;
  } rows[] = {
      {tooLong, "cannot be used: a socket's path has 1 to 107 bytes"},
      {place_.at("absent/run/socket"),
       "cannot be made: " + place_.at("absent/run") + ": No such file or directory"},
      {place_.at("open/socket"), "is not safe: others can enter or change its directory " +
                                     place_.at("open") + "; mode 0750 would be right"},
      {place_.at("private/file"), "is in the way: it is not a socket"},
  };
  for (const auto& row : rows) {
    const Outcome outcome = runAgent({"--socket", row.path});
    EXPECT_EQ(outcome.exitCode, agent::EXIT_UNAVAILABLE);
    EXPECT_THAT(outcome.output,
                HasSubstr("lparams_agent: error: socket " + row.path + " " + row.reason + "\n"));
  }
}

TEST_F(Start, OneAgentPerDirectoryAndPerSocket) {
  start();
  expectRefusal(agent::EXIT_TRY_AGAIN,
                "state directory " + state_.path + " is in use by another agent",
                {"--socket", place_.at("run/other.sock")});
  const agent_testing::ScratchDirectory otherState;
  const Outcome outcome = run({AGENT, "--state-dir", otherState.path, "--socket", socket_});
  EXPECT_EQ(outcome.exitCode, agent::EXIT_UNAVAILABLE);
  EXPECT_THAT(outcome.output,
              HasSubstr("error: socket " + socket_ + " is in use by another agent\n"));
  EXPECT_EQ(ctl({"status"}).exitCode, 0);  // the first one still serves
}

TEST_F(Start, TheSocketOfAKilledAgentIsReplaced) {
  start();
  kill();
  EXPECT_EQ(ctl({"status"}).exitCode, agent::EXIT_UNAVAILABLE);
  start();
  EXPECT_EQ(ctl({"status"}).exitCode, 0);
}

TEST_F(Start, StateDirectoriesThatAreNotSafe) {
  state_.write(SETTINGS, exampleSettings());
  (void)::chmod(state_.path.c_str(), 0770);
  expectRefusal(agent::EXIT_BAD_FILE,
                "state directory " + state_.path +
                    " can be written to by other users; mode 0700 would be right");
  EXPECT_THAT(state_.names(), ElementsAre(SETTINGS));
}

TEST_F(Start, StateDirectoriesOfOtherUsers) {
  state_.write(SETTINGS, exampleSettings());
  const auto foreign = testing_support::foreignDirectory(state_.path);
  if (!foreign) GTEST_SKIP() << "every directory belongs to this user here";
  const Outcome outcome = safety::run({AGENT, "--state-dir", foreign->path, "--socket", socket_});
  EXPECT_EQ(outcome,
            (Outcome{agent::EXIT_BAD_FILE,
                     "lparams_agent: error: state directory " + foreign->path +
                         " belongs to user " + std::to_string(foreign->owner) +
                         ", not to the agent's user " + std::to_string(::geteuid()) + "\n"}));
  EXPECT_THAT(state_.names(), ElementsAre(SETTINGS));
}

using StartInUserNamespace = testing_support::InUserNamespace<Start>;
INSTANTIATE_IN_USER_NAMESPACE(StartInUserNamespace);

TEST_P(StartInUserNamespace, StateDirectoriesOfUsersWithoutANumber) {
  state_.write(SETTINGS, exampleSettings());
  const auto withoutMap = [] { (void)::unshare(CLONE_NEWUSER); };
  const Outcome outcome = runAgent({}, {.inChild = withoutMap});
  EXPECT_EQ(outcome.exitCode, agent::EXIT_BAD_FILE);
  EXPECT_THAT(outcome.output, HasSubstr(", which stands for every user without a number in this "
                                        "namespace\n"));
  EXPECT_THAT(state_.names(), ElementsAre(SETTINGS));
}

TEST_F(Start, NothingButADirectory) {
  const std::string file = place_.at("file");
  place_.write("file", "");
  for (const auto& [path, why] :
       {std::pair{place_.at("absent"), "cannot be used: No such file or directory"},
        {file, "is not a directory"}}) {
    const Outcome outcome = run({AGENT, "--state-dir", path});
    EXPECT_EQ(outcome, (Outcome{agent::EXIT_BAD_FILE, "lparams_agent: error: state directory " +
                                                          path + " " + why + "\n"}));
  }
}

TEST_F(Start, FromTheShadowCopy) {
  state_.write(SETTINGS, exampleSettings(501).substr(0, 1000));
  state_.write(SHADOW_COPY, exampleSettings(502));
  state_.write(BACKUP, exampleSettings(503));
  start();
  EXPECT_THAT(log(), HasSubstr("warning: the settings file was recovered file=" +
                               state_.at(SETTINGS) + " from=" + state_.at(SHADOW_COPY) + "\n"));
  EXPECT_EQ(get("IKE.IKE_PORT"), "502\n");
  kill();
  EXPECT_EQ(state_.text(SETTINGS), exampleSettings(502));
  EXPECT_EQ(state_.textOfOnly("localsettings.ini.damaged-"), exampleSettings(501).substr(0, 1000));
}

TEST_F(Start, FromTheBackup) {
  state_.write(SETTINGS, "");
  state_.write(SHADOW_COPY, std::string(exampleSettings()).append(1, '\0'));
  state_.write(BACKUP, exampleSettings(503));
  start();
  EXPECT_THAT(log(), HasSubstr("from=" + state_.at(BACKUP) + "\n"));
  EXPECT_EQ(get("IKE.IKE_PORT"), "503\n");
  EXPECT_EQ(state_.unsealedText(SHADOW_COPY), exampleSettings(503));
  EXPECT_EQ(state_.textOfOnly("localsettings.ini.damaged-"), "");
}

TEST_F(Start, NotFromDamagedFilesAlone) {
  state_.write(SETTINGS, exampleSettings().substr(0, 1000));
  state_.write(BACKUP, "");
  const auto before = state_.contents();
  expectRefusal(agent::EXIT_BAD_FILE,
                "no complete settings in " + state_.path + ": " + state_.at(SETTINGS) +
                    " (2 of its blocks are not closed) " + state_.at(BACKUP) +
                    " (it is empty); repair one, or start with --allow-defaults");
  EXPECT_EQ(state_.contents(), before);

  start({"--allow-defaults"});
  EXPECT_EQ(get("IKE.EXCHANGE_TIMEOUT"), "60\n");
  EXPECT_EQ(state_.textOfOnly("localsettings.ini.damaged-"), exampleSettings().substr(0, 1000));
  EXPECT_EQ(state_.textOfOnly("localsettings.ini.bak.damaged-"), "");
  kill();
  start();
  EXPECT_THAT(log(), Not(HasSubstr("warning")));
}

TEST_F(Start, NotIfAFileIsNoFile) {
  (void)::mkdir(state_.at(SETTINGS).c_str(), 0700);
  state_.write(SHADOW_COPY, exampleSettings());
  expectRefusal(agent::EXIT_BAD_FILE,
                state_.at(SETTINGS) + " cannot be used: it is not a regular file: Invalid argument",
                {"--allow-defaults"});
  EXPECT_THAT(state_.names(), ElementsAre(SETTINGS, SHADOW_COPY));
}

// A complete file is served whatever the disk says; what could not be written is made good later.
TEST_F(Start, OnADiskThatTakesNothing) {
  state_.write(SETTINGS, exampleSettings());
  (void)::mkdir(state_.at("localsettings.ini.good.new").c_str(), 0700);
  const std::string reason =
      state_.at("localsettings.ini.good.new") + " cannot be created: File exists";
  start();
  EXPECT_THAT(log(), HasSubstr("warning: settings are served, but could not be made durable "
                               "reason=\"" +
                               reason + "\"\n"));
  EXPECT_EQ(get("IKE.EXCHANGE_TIMEOUT"), "90\n");
  EXPECT_EQ(state("disk"), reason);
  EXPECT_EQ(ctl({"save"}).exitCode, agent::EXIT_IO);

  state_.remove("localsettings.ini.good.new");
  save();
  EXPECT_EQ(state("disk"), "no");
  EXPECT_EQ(state_.unsealedText(SHADOW_COPY), exampleSettings());
}

TEST_F(Start, NotWithDefaultsThatCannotBeMadeDurable) {
  (void)::mkdir(state_.at("localsettings.ini.good.new").c_str(), 0700);
  const Outcome outcome = runAgent();
  EXPECT_EQ(outcome.exitCode, agent::EXIT_IO);
  EXPECT_THAT(outcome.output, HasSubstr("error: " + state_.at("localsettings.ini.good.new") +
                                        " cannot be created"));
}

// One flipped bit may leave a file that is complete and says something else.
TEST_F(Start, OnADamagedButWellFormedFileKeepsTheShadowCopy) {
  state_.write(SETTINGS, exampleSettings());
  start();
  kill();
  std::string damaged = exampleSettings();
  damaged.replace(damaged.find("EXCHANGE_TIMEOUT"), 8, "EXCHANGA");
  state_.write(SETTINGS, damaged);
  start();
  EXPECT_THAT(state("degraded"), HasSubstr("the settings file is not what was saved last"));
  EXPECT_EQ(state_.unsealedText(SHADOW_COPY), exampleSettings());
  EXPECT_EQ(ctl({"save"}).exitCode, agent::EXIT_IO);
  EXPECT_EQ(state_.text(SETTINGS), damaged);
}

// A shadow copy that cannot be read is not taken for one that is missing.
TEST_F(Start, WithAShadowCopyThatCannotBeReadKeepsIt) {
  for (const std::string& found : {exampleSettings(501), settingsWithoutGroups()}) {
    state_.write(SETTINGS, exampleSettings());
    start();
    kill();
    const std::string saved = state_.text(SHADOW_COPY);
    place_.write("elsewhere", saved);
    state_.write(SETTINGS, found);
    state_.remove(SHADOW_COPY);
    ASSERT_EQ(::symlink(place_.at("elsewhere").c_str(), state_.at(SHADOW_COPY).c_str()), 0);
    start();
    EXPECT_EQ(ctl({"save"}).exitCode, agent::EXIT_IO);
    EXPECT_TRUE(std::filesystem::is_symlink(state_.at(SHADOW_COPY)));

    EXPECT_EQ(ctl({"save", "--force"}).exitCode, 0);
    EXPECT_EQ(state_.unsealedText(SHADOW_COPY), state_.text(SETTINGS));
    EXPECT_THAT(state_.names(), testing::Contains("localsettings.ini.good.damaged-TIME"));
    EXPECT_EQ(place_.text("elsewhere"), saved);
    kill();
    for (const auto& entry : std::filesystem::directory_iterator(state_.path)) {
      std::filesystem::remove(entry.path());
    }
  }
}

TEST_F(Start, AfterAShadowCopyThatCouldNotBeReadTheNextSaveKeepsIt) {
  state_.write(SETTINGS, exampleSettings());
  start();
  kill();
  const std::string saved = state_.text(SHADOW_COPY);
  state_.write(SETTINGS, exampleSettings(501));  // edited
  state_.remove(SHADOW_COPY);
  ASSERT_EQ(::symlink("elsewhere", state_.at(SHADOW_COPY).c_str()), 0);
  start();
  EXPECT_EQ(state("degraded"), "no");
  EXPECT_THAT(state("disk"), HasSubstr(state_.at(SHADOW_COPY) + " cannot be opened: "));
  state_.remove(SHADOW_COPY);
  state_.write(SHADOW_COPY, saved);
  save();
  EXPECT_EQ(state("disk"), "no");
  EXPECT_EQ(state_.textOfOnly("localsettings.ini.former-"), exampleSettings());
  EXPECT_EQ(state_.unsealedText(SHADOW_COPY), exampleSettings(501));
}

TEST_F(Start, OnAnEditedFileKeepsTheFormerText) {
  state_.write(SETTINGS, exampleSettings());
  start();
  kill();
  state_.write(SETTINGS, exampleSettings(501));
  start();
  EXPECT_THAT(log(), HasSubstr("notice: the settings file is not what was saved last: it was "
                               "edited, or a save was cut short"));
  EXPECT_EQ(state("degraded"), "no");
  EXPECT_EQ(get("IKE.IKE_PORT"), "501\n");
  EXPECT_EQ(state_.textOfOnly("localsettings.ini.former-"), exampleSettings());
  EXPECT_EQ(state_.unsealedText(SHADOW_COPY), exampleSettings(501));
}

TEST_F(Start, AFirstStartSurvivesAKill) {
  start();
  EXPECT_THAT(log(), HasSubstr("notice: first start: there is no settings file"));
  kill();
  const std::string text = state_.text(SETTINGS);
  EXPECT_THAT(text, StartsWith("/ROOT="));
  EXPECT_EQ(state_.unsealedText(SHADOW_COPY), text);
  start();
  EXPECT_THAT(log(), Not(HasSubstr("first start")));
  EXPECT_EQ(state_.text(SETTINGS), text);
}

class Import : public AgentTest {
 protected:
  /// The settings of the example were imported, whatever became of the agent.
  void expectImported() {
    kill();
    EXPECT_EQ(state_.textOfOnly("localsettings.xml.imported-"), legacy_);
    EXPECT_EQ(state_.text("localsettings.xml"), "(absent)");
    EXPECT_EQ(state_.text("localsettings.xml.importing"), "(absent)");
    start();
    EXPECT_EQ(get("POLICY.PMP_SERVERS"), "pmp1.example.com, pmp2.example.com\n");
    EXPECT_THAT(log(), Not(HasSubstr("import")));
  }

  const std::string legacy_ = [] {
    const agent_testing::ScratchDirectory copy;
    std::filesystem::copy_file(SOURCE_DIR "/examples/localsettings.xml", copy.at("legacy"));
    return copy.text("legacy");
  }();
};

TEST_F(Import, SurvivesAKillWithoutASave) {
  state_.write("localsettings.xml", legacy_);
  start();
  EXPECT_THAT(log(), HasSubstr("notice: the settings of earlier versions were imported kept="));
  EXPECT_EQ(get("POLICY.PMP_SERVERS"), "pmp1.example.com, pmp2.example.com\n");
  expectImported();
}

TEST_F(Import, ThatWasCutShortIsDoneAgain) {
  state_.write("localsettings.xml.importing", legacy_);
  start();
  EXPECT_THAT(log(), HasSubstr("an import of the settings of earlier versions was cut short"));
  expectImported();
}

// The module takes a broken document for an empty one, and deletes it.
TEST_F(Import, OfABrokenDocumentIsNone) {
  std::string utf16;
  for (const char c : legacy_) utf16 += {c, '\0'};
  std::string deep;
  for (int i = 0; i < 100; ++i) deep += "<a>";
  const struct {
    std::string text;
    std::string reason;
  } rows[] = {
      {"", "its first element is \"\", not \"LocalSettings\""},
      {"<Settings/>", "its first element is \"Settings\", not \"LocalSettings\""},
      {legacy_.substr(0, legacy_.size() - 20), ", line "},
      {utf16, "at byte "},
      {deep, "the document is nested deeper than 64 elements"},
      {legacy_ + std::string(1024 * 1024, ' '), "the document is larger than 1048576 bytes"},
      {std::string(17 * 1024 * 1024, 'x'), "the document is larger than 1048576 bytes"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.reason);
    state_.write("localsettings.xml", row.text);
    state_.remove("localsettings.xml.importing");
    start();
    EXPECT_THAT(state("degraded"),
                AllOf(StartsWith("the settings of earlier versions could not be imported ("),
                      HasSubstr(row.reason)));
    EXPECT_EQ(ctl({"save"}).exitCode, agent::EXIT_IO);
    kill();
    EXPECT_EQ(state_.text(SETTINGS), "(absent)");
    EXPECT_TRUE(state_.text("localsettings.xml.importing") == row.text);
  }
  state_.write("localsettings.xml", legacy_);  // repaired
  state_.remove("localsettings.xml.importing");
  start();
  expectImported();
}

TEST_F(Import, OfARepairedDocumentKeepsTheBrokenOne) {
  const std::string broken = legacy_.substr(0, legacy_.size() - 20);
  state_.write("localsettings.xml", broken);
  start();
  EXPECT_THAT(state("degraded"), HasSubstr(", line "));
  kill();
  state_.write("localsettings.xml", legacy_);
  start();
  EXPECT_EQ(state("degraded"), "no");
  EXPECT_EQ(get("POLICY.PMP_SERVERS"), "pmp1.example.com, pmp2.example.com\n");
  EXPECT_EQ(state_.text("localsettings.xml.importing"), "(absent)");
  const auto contents = state_.contents();
  for (const std::string& text : {broken, legacy_}) {
    EXPECT_THAT(contents, testing::Contains(HasSubstr(text)));
  }
}

TEST_F(Import, ThatFailedMayBeGivenUp) {
  const std::string broken = legacy_.substr(0, legacy_.size() - 20);
  state_.write("localsettings.xml", broken);
  start();
  EXPECT_EQ(ctl({"save", "--force"}).exitCode, 0);
  EXPECT_EQ(state("degraded"), "no");
  EXPECT_EQ(state_.textOfOnly("localsettings.xml.damaged-"), broken);
  kill();
  start();
  EXPECT_EQ(state("degraded"), "no");
  EXPECT_THAT(log(), testing::Not(HasSubstr("imported")));
}

class SystemImport : public testing_support::EachWay<Import> {
 protected:
  void startWithSystemFile(const std::string& text) {
    etc_.write("localsettings.xml", text);
    Surroundings surroundings;
    if (mounts()) {
      surroundings.inChild = [&] {
        testing_support::enterPrivateMounts();
        testing_support::replaceSystemDirectory();
        std::filesystem::copy_file(etc_.at("localsettings.xml"), "/etc/kestrel/localsettings.xml");
      };
    } else {
      const auto variables = testing_support::systemDirectoryAt(etc_.path);
      surroundings.environment = {variables.begin(), variables.end()};
    }
    start({}, surroundings);
  }

  const agent_testing::ScratchDirectory etc_;
};

INSTANTIATE_EACH_WAY(SystemImport);

TEST_P(SystemImport, OfTheSystemsOwnFile) {
  startWithSystemFile(legacy_);
  EXPECT_EQ(get("POLICY.PMP_SERVERS"), "pmp1.example.com, pmp2.example.com\n");
  if (!mounts()) {
    EXPECT_EQ(etc_.text("localsettings.xml"), "(absent)");
  }
  expectImported();
}

// The module deletes it, whichever it has read.
TEST_P(SystemImport, KeepsTheSystemsOwnFileBesideAnother) {
  const std::string other = "<LocalSettings/>";
  state_.write("localsettings.xml", legacy_);
  startWithSystemFile(other);
  EXPECT_EQ(get("POLICY.PMP_SERVERS"), "pmp1.example.com, pmp2.example.com\n");
  kill();
  const auto contents = state_.contents();
  for (const std::string& text : {legacy_, other}) {
    EXPECT_THAT(contents, testing::Contains(AllOf(StartsWith("localsettings.xml.imported-"),
                                                  testing::EndsWith(": " + text))));
  }
}

}  // namespace
}  // namespace safety
