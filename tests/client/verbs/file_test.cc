// --file: the same verbs on a settings file, without an agent.
#include <sys/stat.h>

#include "tests/client/verbs/client_test.h"

namespace system_testing {
namespace {

class OnAFile : public Client {
 protected:
  void SetUp() override { write(sourceFile("examples/localsettings.ini")); }

  void write(const std::string& text) const { host::writeFile(path, text); }

  Outcome on(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"--file", path});
    return client_testing::runClient(arguments);
  }

  std::string out(const std::vector<std::string>& arguments) const {
    const Outcome outcome = on(arguments);
    EXPECT_EQ(outcome, printed(outcome.out));
    return outcome.out;
  }

  const std::string path = directory.path + "settings.ini";
};

TEST_F(OnAFile, ValuesAreReadAndDescribed) {
  EXPECT_EQ(out({"get", "IKE.EXCHANGE_TIMEOUT", "IKE.DPD_IDLE_TIME", "USERS[bob].PMP_TIMEOUT"}),
            "90\n45\n10\n");
  EXPECT_EQ(out({"list", "IKE.EXCHANGE_TIMEOUT"}),
            "NAME                  VALUE  DEFAULT  SAVED  LEGAL\n"
            "IKE.EXCHANGE_TIMEOUT  90     60       90     5 to 600\n");
  EXPECT_THAT(out({"describe", "IKE.EXCHANGE_TIMEOUT"}), HasSubstr("  value:   90\n"));
  EXPECT_EQ(on({"get", "IKE.IKE_PROT"}),
            failed(65, "IKE.IKE_PROT: no such parameter; did you mean IKE.IKE_PORT?"));
}

TEST_F(OnAFile, ChangesAreWrittenAsASaveWouldWriteThem) {
  ASSERT_EQ(chmod(path.c_str(), 0640), 0);
  EXPECT_EQ(out({"set", "IKE.IKE_PORT=501", "USERS[bob].PMP_TIMEOUT=25"}),
            "IKE.IKE_PORT: 500 -> 501\nUSERS[bob].PMP_TIMEOUT: 10 -> 25\n");
  std::string expected = sourceFile("examples/localsettings.ini");
  expected.replace(expected.find("IKE_PORT=500"), 12, "IKE_PORT=501");
  expected.replace(expected.rfind("PMP_TIMEOUT=10"), 14, "PMP_TIMEOUT=25");
  EXPECT_EQ(host::readFile(path), expected);
  struct stat status {};
  ASSERT_EQ(stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0640U);
  EXPECT_EQ(out({"user", "list"}), "alice\nbob\n");
}

TEST_F(OnAFile, IsComparedWithTheDefaultsAndOtherFiles) {
  const std::string other = directory.path + "other.ini";
  host::writeFile(other, sourceFile("examples/localsettings.ini"));
  EXPECT_EQ(out({"diff", "--file", other}), "");
  (void)out({"set", "IKE.IKE_PORT=501"});
  EXPECT_EQ(on({"diff", "--file", other}), (Outcome{1, "IKE.IKE_PORT: 500 -> 501\n", ""}));
  EXPECT_EQ(on({"diff"}), printed("")) << "a file is saved";
  EXPECT_THAT(on({"diff", "--default"}).out, HasSubstr("IKE.IKE_PORT: 500 -> 501\n"));
  EXPECT_EQ(on({"diff", "--revision", "1"}).exitCode, 64);
}

TEST_F(OnAFile, AMistakeWritesNothing) {
  EXPECT_EQ(on({"set", "IKE.IKE_PORT=501", "IKE.NATT_PORT=0"}),
            failed(65,
                   "IKE.NATT_PORT: \"0\" is not a whole number from 1 to 65535\n"
                   "nothing was written"));
  EXPECT_EQ(on({"set", "IKE.IKE_PORT=501", "IKE.NATT_PORT=0", "LOG.WALL_ON"}),
            failed(64,
                   "an assignment has no \"=\"; write NAME=VALUE\n"
                   "IKE.NATT_PORT: \"0\" is not a whole number from 1 to 65535\n"
                   "nothing was written"));
  EXPECT_EQ(host::readFile(path), sourceFile("examples/localsettings.ini"));
}

TEST_F(OnAFile, NothingIsWrittenThatWouldLoseSomething) {
  std::string text = sourceFile("examples/localsettings.ini");
  text.insert(text.find("IKE_PORT="), "# a comment\n        ");
  write(text);
  EXPECT_EQ(on({"set", "LOG.WALL_ON=1"}),
            failed(78, path + " holds what a load does not take as it stands, and what would be "
                              "lost: see \"lparamsctl check\"; nothing was written"));
  EXPECT_EQ(host::readFile(path), text);
  EXPECT_EQ(out({"set", "LOG.WALL_ON=0"}), "LOG.WALL_ON: 0 (unchanged)\n");
}

TEST_F(OnAFile, OnlyWholeSettingsFilesAreTaken) {
  EXPECT_EQ(client_testing::runClient({"--file", "/nonexistent", "list"}),
            failed(74, "cannot read /nonexistent: No such file or directory"));
  write("PARAMS=\n    IKE=\n");
  EXPECT_EQ(on({"list"}).exitCode, 78);
  EXPECT_THAT(on({"set", "IKE.IKE_PORT=501"}).err, HasSubstr(" is no settings file: "));
  write("");
  EXPECT_EQ(on({"list"}).exitCode, 78);
}

TEST_F(OnAFile, AFileOfARunningAgentIsLeftToIt) {
  host::writeFile(settingsPath, sourceFile("examples/localsettings.ini"));
  start();
  const Outcome outcome = client_testing::runClient({"--file", settingsPath, "list"});
  EXPECT_EQ(outcome, failed(75, settingsPath +
                                    " is in the directory of a running agent; leave out --file to "
                                    "reach its settings"));
  stop();
  EXPECT_EQ(client_testing::runClient({"--file", settingsPath, "list"}).exitCode, 0);
}

TEST_F(OnAFile, ThereIsNothingThatOnlyAnAgentHas) {
  for (const char* verb : {"status", "save", "watch"}) {
    EXPECT_EQ(on({verb}).exitCode, 64) << verb;
    EXPECT_THAT(on({verb}).err, HasSubstr("this command is for an agent"));
  }
}

}  // namespace
}  // namespace system_testing
