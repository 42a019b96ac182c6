#include <sys/stat.h>

#include <filesystem>

#include "tests/client/client_on_terminal.h"
#include "tests/client/verbs/client_test.h"

using client_testing::ClientOnTerminal;
using testing::StartsWith;

namespace system_testing {
namespace {

/// What the scripted editors do is in $EDITOR, which gets the path of the text at its end.
class Edit : public Client {
 protected:
  void SetUp() override {
    Client::SetUp();
    std::filesystem::create_directory(temporary);
  }

  ClientOnTerminal edit(const std::string& editor, std::vector<std::string> options = {}) const {
    options.insert(options.begin(), {"--socket", socketPath, "edit"});
    return {options, {{"EDITOR", editor}, {"VISUAL", ""}, {"TMPDIR", temporary}}};
  }

  /// The command line of another client.
  std::string other(const std::string& assignment) const {
    return PRODUCTS_DIR "/lparamsctl --socket " + socketPath + " set " + assignment +
           " > /dev/null; ";
  }

  /// The files that are left over, with their texts.
  std::string left() const {
    std::string texts;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(temporary)) {
      if (entry.is_regular_file()) texts += host::readFile(entry.path());
    }
    return texts;
  }

  std::string port() const { return out({"get", "IKE.IKE_PORT"}); }

  const std::string temporary = directory.path + "temporary";
};

constexpr const char* WRITE = "write this? [y/n/e to edit again] ";
constexpr const char* REPLACE = "replace theirs by yours? [y/n/e to edit again] ";
constexpr const char* AGAIN = "edit again? [y/n] ";

TEST_F(Edit, WritesWhatWasChangedIfItIsWanted) {
  ClientOnTerminal client = edit("sed -i s/IKE_PORT=500/IKE_PORT=501/", {"IKE"});
  EXPECT_THAT(client.outputUntil(WRITE), HasSubstr("\nIKE.IKE_PORT: 500 -> 501\n"));
  EXPECT_EQ(port(), "500\n");
  client.type("y\n");
  EXPECT_EQ(client.rest(), "written, not saved\n");
  EXPECT_EQ(client.exitCode(), 0);
  EXPECT_EQ(port(), "501\n");
  EXPECT_EQ(left(), "");
}

TEST_F(Edit, SavesIfItIsToldTo) {
  ClientOnTerminal client = edit("sed -i s/IKE_PORT=500/IKE_PORT=501/", {"--save"});
  (void)client.outputUntil(WRITE);
  client.type("y\n");
  EXPECT_EQ(client.rest(), "written and saved\n");
  EXPECT_THAT(host::readFile(settingsPath), HasSubstr("IKE_PORT=501\n"));
}

TEST_F(Edit, WithoutChangesThereIsNothingToChange) {
  ClientOnTerminal client = edit("true");
  EXPECT_THAT(client.rest(), HasSubstr("\nnothing to change\n"));
  EXPECT_EQ(client.exitCode(), 0);
  EXPECT_EQ(left(), "");
}

TEST_F(Edit, TextTellsWhatEachParameterMeansAndHidesSecrets) {
  (void)ctlWith("IKE.QCD_SECRET=s3cret\n", {"set", "-"});
  const std::string copy = directory.path + "copy";
  const std::string editor = "f() { cp \"$1\" " + copy + "; stat -c %a \"$1\" \"${1%/*}\"; }; f";
  EXPECT_THAT(edit(editor).rest(), HasSubstr("\n600\n700\nnothing to change\n"));
  const std::string text = host::readFile(copy);
  EXPECT_THAT(text, HasSubstr("\n# exchange time-out; 5 to 600; default 60\n"
                              "IKE.EXCHANGE_TIMEOUT=90\n"));
  EXPECT_THAT(text, HasSubstr("\nIKE.QCD_SECRET=(hidden)\n"));
  EXPECT_THAT(text, HasSubstr("\nUSERS[bob].PMP_TIMEOUT=10\n"));
  (void)edit(editor, {"--secrets", "IKE"}).rest();
  EXPECT_THAT(host::readFile(copy), HasSubstr("\nIKE.QCD_SECRET=s3cret\n"));
  EXPECT_THAT(host::readFile(copy), Not(HasSubstr("USERS[bob]")));
}

TEST_F(Edit, MistakesComeBackAsRemarksInTheText) {
  ClientOnTerminal client = edit(
      "f() { grep '^#! ' -A 1 \"$1\"; sed -i -e 's/IKE_PORT=501/IKE_PORT=502/;s/^USERS.bob.*//' "
      "-e 's/IKE_PORT=70000/IKE_PORT=501/' -e 's/IKE_PORT=500/IKE_PORT=70000/' \"$1\"; }; f");
  EXPECT_THAT(client.outputUntil(AGAIN),
              HasSubstr("IKE.IKE_PORT: \"70000\" is not a whole number from 1 to 65535\n"));
  client.type("maybe\n");
  EXPECT_EQ(client.outputUntil(AGAIN), AGAIN);
  client.type("y\n");
  EXPECT_EQ(client.outputUntil(WRITE),
            "#! IKE.IKE_PORT: \"70000\" is not a whole number from 1 to 65535\n"
            "IKE.IKE_PORT=70000\nIKE.IKE_PORT: 500 -> 501\n" +
                std::string(WRITE));
  client.type("e\n");
  EXPECT_EQ(client.outputUntil(WRITE), "IKE.IKE_PORT: 500 -> 502\n" + std::string(WRITE));
  client.type("y\n");
  EXPECT_EQ(client.rest(), "written, not saved\n");
  EXPECT_EQ(port(), "502\n");
}

TEST_F(Edit, WhoGivesUpKeepsTheText) {
  for (const char* answer : {"n\n", "\x04"}) {
    ClientOnTerminal client = edit("sed -i s/IKE_PORT=500/IKE_PORT=501/");
    (void)client.outputUntil(WRITE);
    client.type(answer);
    EXPECT_THAT(client.rest(), StartsWith("nothing was written; your text is in " + temporary));
    EXPECT_EQ(client.exitCode(), 0);
    EXPECT_THAT(left(), HasSubstr("\nIKE.IKE_PORT=501\n"));
  }
  EXPECT_EQ(port(), "500\n");
}

TEST_F(Edit, ValuesThatOthersHaveChangedMeanwhileAreAskedFor) {
  ClientOnTerminal client = edit("f() { " + other("IKE.IKE_PORT=502 LOG.WALL_ON=1") +
                                 "sed -i -e s/IKE_PORT=500/IKE_PORT=501/ \"$1\"; }; f");
  EXPECT_THAT(client.outputUntil(REPLACE), HasSubstr("\nIKE.IKE_PORT: 502 -> 501\n"
                                                     "IKE.IKE_PORT was changed meanwhile:\n"
                                                     "  before: 500\n"
                                                     "  theirs: 502\n"
                                                     "  yours:  501\n"));
  client.type("y\n");
  EXPECT_EQ(client.rest(), "written, not saved\n");
  EXPECT_EQ(port(), "501\n");
  EXPECT_EQ(out({"get", "LOG.WALL_ON"}), "1\n") << "what others have changed stays";
}

TEST_F(Edit, WhatOthersChangeDuringTheQuestionIsAskedForToo) {
  ClientOnTerminal client = edit("sed -i s/IKE_PORT=500/IKE_PORT=501/");
  (void)client.outputUntil(WRITE);
  (void)out({"set", "IKE.IKE_PORT=502"});
  client.type("y\n");
  EXPECT_EQ(client.outputUntil(REPLACE),
            "somebody has changed these settings meanwhile\n"
            "IKE.IKE_PORT: 502 -> 501\n"
            "IKE.IKE_PORT was changed meanwhile:\n"
            "  before: 500\n  theirs: 502\n  yours:  501\n" +
                std::string(REPLACE));
  (void)out({"set", "IKE.NATT_PORT=4501"});  // is no reason to ask
  client.type("y\n");
  EXPECT_EQ(client.rest(), "written, not saved\n");
  EXPECT_EQ(port(), "501\n");
}

TEST_F(Edit, UsersCanBeAdded) {
  ClientOnTerminal client =
      edit("f() { echo 'USERS[eve].PMP_TIMEOUT=20' >> \"$1\"; }; f", {"USERS"});
  EXPECT_THAT(client.outputUntil(WRITE),
              HasSubstr("\nUSERS[eve]: added\nUSERS[eve].PMP_TIMEOUT: - -> 20\n"));
  client.type("y\n");
  (void)client.rest();
  EXPECT_EQ(out({"user", "list"}), "alice\nbob\neve\n");
}

TEST_F(Edit, EditorThatFailsIsAnErrorAndTheTextIsKept) {
  ClientOnTerminal client = edit("false");
  EXPECT_THAT(client.rest(), HasSubstr("lparamsctl: the editor failed\n"
                                       "lparamsctl: your text is in " +
                                       temporary));
  EXPECT_EQ(client.exitCode(), 74);
  EXPECT_THAT(left(), HasSubstr("\nIKE.IKE_PORT=500\n"));
}

TEST_F(Edit, AgentThatGoesMeanwhileTakesNothingAlong) {
  ClientOnTerminal client = edit("sed -i s/IKE_PORT=500/IKE_PORT=501/");
  (void)client.outputUntil(WRITE);
  stop();
  client.type("y\n");
  EXPECT_THAT(client.rest(), HasSubstr("lparamsctl: your text is in " + temporary));
  EXPECT_EQ(client.exitCode(), 69);
  EXPECT_THAT(left(), HasSubstr("\nIKE.IKE_PORT=501\n"));
}

TEST_F(Edit, NeedsATerminal) {
  EXPECT_EQ(
      ctl({"edit"}),
      failed(64, "\"edit\" asks on a terminal, and there is none; \"apply\" takes a document"));
}

}  // namespace
}  // namespace system_testing
