// fmt: settings files as a save would write them.
#include <sys/stat.h>

#include "tests/client/verbs/client_test.h"

namespace system_testing {
namespace {

using testing::EndsWith;
using testing::StartsWith;

class Fmt : public Client {
 protected:
  void SetUp() override {}

  void write(const std::string& text) const { host::writeFile(path, text); }

  static std::string example() { return sourceFile("examples/localsettings.ini"); }

  static std::string edited(const std::string& from, const std::string& to) {
    std::string text = example();
    return text.replace(text.find(from), from.size(), to);
  }

  Outcome fmt(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "fmt");
    return client_testing::runClient(arguments);
  }

  const std::string path = directory.path + "settings.ini";
};

/// The example with its values, otherwise written than by a save.
std::string withOtherSpelling(std::string text) {
  text.insert(0, "\xEF\xBB\xBF");
  for (size_t at; (at = text.find("    ")) != std::string::npos;) text.erase(at, 4);
  const std::string port = "IKE_PORT=500";
  return text.replace(text.find(port), port.size(), "IKE_PORT= +0500");
}

TEST_F(Fmt, PrintsTheFileAsASaveWouldWriteIt) {
  write(withOtherSpelling(example()));
  EXPECT_EQ(fmt({path}), printed(example()));
  EXPECT_EQ(client_testing::runClient({"fmt", "-"}, {.in = example()}), printed(example()));
}

TEST_F(Fmt, AddsWhatTheFileLeavesOut) {
  write(edited("        NATT_PORT=4500\n", ""));
  EXPECT_EQ(fmt({path}), printed(example()));
}

TEST_F(Fmt, IsWhatTheAgentWouldWrite) {
  host::writeFile(settingsPath, withOtherSpelling(example()));
  const std::string formatted = fmt({settingsPath}).out;
  start();
  ASSERT_EQ(ctl({"set", "IKE.IKE_PORT=501"}).exitCode, 0);
  ASSERT_EQ(ctl({"save"}).exitCode, 0);
  ASSERT_EQ(ctl({"set", "IKE.IKE_PORT=500"}).exitCode, 0);
  ASSERT_EQ(ctl({"save"}).exitCode, 0);
  EXPECT_EQ(host::readFile(settingsPath), formatted);
}

TEST_F(Fmt, RefusesToLoseAnything) {
  const std::pair<std::string, std::string> edits[] = {
      {"        IKE_PORT", "# a comment\n        IKE_PORT"},
      {"IKE_PORT=500", "IKE_PORT=500 # a comment"},
      {"IKE_PORT=500", "IKE_PORT=70000"},
      {"IKE_PORT=500", "IKE_PORT=500\nFOO=1"},
      {"EXCHANGE_TIMEOUT=90", "EXCHANGE_TIMEOUT=2"},
      {"IKE_PORT=500", "IKE_PORT=500\nIKE_PORT=501"},
  };
  for (const auto& [from, to] : edits) {
    const std::string text = edited(from, to);
    write(text);
    for (const char* option : {"--write", "--check", "--"}) {
      const Outcome outcome = fmt({option, path});
      EXPECT_EQ(outcome.exitCode, 65) << to;
      EXPECT_EQ(outcome.out, "");
      EXPECT_THAT(outcome.err, StartsWith("lparamsctl: " + path + ":"));
      EXPECT_THAT(outcome.err,
                  EndsWith("\nlparamsctl: this would be lost; --force does it all the same\n"));
      EXPECT_EQ(host::readFile(path), text);
    }
    EXPECT_THAT(fmt({"--force", path}).out, StartsWith("/ROOT=\n    /IKE=\n"));
  }
  write(edited("IKE_PORT=500", "IKE_PORT=501 # mine\n        FOO=1"));
  EXPECT_EQ(fmt({"--force", "-w", path}), printed(""));
  EXPECT_EQ(host::readFile(path), edited("IKE_PORT=500", "IKE_PORT=501"));
}

TEST_F(Fmt, WritesInPlaceAndKeepsTheMode) {
  write(withOtherSpelling(example()));
  ASSERT_EQ(chmod(path.c_str(), 0640), 0);
  EXPECT_EQ(fmt({"--write", path}), printed(""));
  EXPECT_EQ(host::readFile(path), example());
  EXPECT_EQ(host::modeOf(path), 0640U);
  struct stat before {};
  ASSERT_EQ(stat(path.c_str(), &before), 0);
  EXPECT_EQ(fmt({"-w", path}), printed(""));
  struct stat after {};
  ASSERT_EQ(stat(path.c_str(), &after), 0);
  EXPECT_EQ(after.st_ino, before.st_ino) << "what is right already is not written";
}

TEST_F(Fmt, TellsWhetherAFileWouldChange) {
  write(example());
  EXPECT_EQ(fmt({"--check", path}), printed(""));
  write(withOtherSpelling(example()));
  EXPECT_EQ(fmt({"--check", path}), (Outcome{1, "", ""}));
  EXPECT_EQ(host::readFile(path), withOtherSpelling(example()));
}

TEST_F(Fmt, TakesSettingsFilesOnly) {
  write(example().substr(0, 200));
  EXPECT_EQ(fmt({"--force", path}).exitCode, 78);
  write("IKE.IKE_PORT=500\n");
  EXPECT_EQ(fmt({path}), failed(78, path + " is no settings file"));
  EXPECT_EQ(fmt({"/nonexistent"}),
            failed(74, "cannot read /nonexistent: No such file or directory"));
  EXPECT_EQ(fmt({"-w", "-"}), failed(64, "the standard input cannot be written; name a file"));
  EXPECT_EQ(fmt({"-w", "--check", path}).exitCode, 64);
}

TEST_F(Fmt, PrintsWhatTheImportOfEarlierSettingsLeadsTo) {
  const std::string earlier = SOURCE_DIR "/examples/localsettings.xml";
  const Outcome outcome = fmt({earlier});
  EXPECT_EQ(outcome, printed(outcome.out));
  EXPECT_THAT(outcome.out, HasSubstr("        NATT_POLICY=NATT_POLICY_STD_FORCE\n"));
  EXPECT_EQ(client_testing::runClient({"check", "-"}, {.in = outcome.out}), printed(""));
  EXPECT_EQ(fmt({"--write", earlier}), failed(78, earlier + " is no settings file"));
}

TEST_F(Fmt, LeavesAFileOfARunningAgentToIt) {
  host::writeFile(settingsPath, withOtherSpelling(example()));
  start();
  EXPECT_EQ(fmt({"-w", settingsPath}),
            failed(75, settingsPath + " is in the directory of a running agent; stop it first"));
  EXPECT_EQ(host::readFile(settingsPath), withOtherSpelling(example()));
  EXPECT_EQ(fmt({settingsPath}), printed(example()));
}

}  // namespace
}  // namespace system_testing
