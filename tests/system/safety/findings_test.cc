// What the agent tells of its settings file beside what it takes of it.
#include <algorithm>

#include "bridge/protocol.h"
#include "programs/exit_status.h"
#include "tests/support/records.h"
#include "tests/system/safety/agent_test.h"

namespace safety {
namespace {

using agent_testing::exampleSettings;
using agent_testing::RawClient;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

std::string edited(const std::string& from, const std::string& to) {
  std::string text = exampleSettings();
  return text.replace(text.find(from), from.size(), to);
}

class Findings : public AgentTest {
 protected:
  /// What `status --findings` prints.
  std::string list() { return ctl({"status", "--findings"}).output; }

  /// Saves and restarts with a file that holds something else.
  void startWithEdit(const std::string& text) {
    state_.write(SETTINGS, exampleSettings());
    start();
    EXPECT_EQ(stop(), 0);
    state_.write(SETTINGS, text);
    start();
  }

  void write(LPARAMS::Server::ParamGroup& group) {
    const RawClient client(socket_);
    ASSERT_TRUE(client.greet());
    EXPECT_EQ(client.exchange(bridge::Command{13, 0, testing_support::encodeRecord(group)}).result,
              1);
  }

  size_t linesWith(const std::string& text) const {
    size_t count = 0;
    for (size_t at = log().find(text); at != std::string::npos; at = log().find(text, at + 1)) {
      ++count;
    }
    return count;
  }
};

TEST_F(Findings, AreToldWithTheirPlacesUntilASaveHasReplacedTheFile) {
  state_.write(SETTINGS, edited("        IKE_PORT=500\n        NATT_PORT=4500\n",
                                "        IKE_PORT=70000\n        EXCHANGE_TIMEOUT=700\n"));
  start();
  const std::string unreadable = "the value cannot be read; the parameter kept its value";
  EXPECT_THAT(log(), HasSubstr("warning: " + unreadable +
                               " line=5 column=18 parameter=IKE.IKE_PORT text=70000 "
                               "expected=\"a whole number from 1 to 65535\" value=500\n"));
  EXPECT_THAT(log(), HasSubstr("line=6 column=26 parameter=IKE.EXCHANGE_TIMEOUT text=700 "
                               "expected=\"a whole number from 5 to 600\" value=600"));
  EXPECT_EQ(state("findings"), "4");
  EXPECT_EQ(state("findingList"), "(none)");
  EXPECT_EQ(
      list(),
      "line 5, column 18: IKE.IKE_PORT: " + unreadable +
          " (expected \"a whole number from 1 to 65535\", text \"70000\", value \"500\")\n"
          "line 6, column 26: IKE.EXCHANGE_TIMEOUT: the parameter took another value than "
          "the file has (expected \"a whole number from 5 to 600\", text \"700\", value \"600\")\n"
          "line 7, column 9: IKE.EXCHANGE_TIMEOUT: this is given once more; the later one "
          "counts (other-line \"6\")\n"
          "line 2, column 6: IKE: the group has fewer members in the file than it should; "
          "those missing keep their values (missing \"NATT_PORT\")\n");
  save();
  EXPECT_EQ(state("findings"), "0");
  EXPECT_EQ(list(), "");
  EXPECT_EQ(stop(), 0);
  start();
  EXPECT_EQ(state("findings"), "0");
}

// A file of one unknown line each made a log of 591 MiB.
TEST_F(Findings, AreSomeDozenLinesAndASum) {
  std::string lines;
  for (int i = 0; i < 10'000; ++i) lines += "FOO" + std::to_string(i) + "=1\n";
  state_.write(SETTINGS, edited("        IKE_PORT", lines + "        IKE_PORT"));
  start();
  EXPECT_EQ(linesWith(" parameter=IKE.FOO"), 40u);
  EXPECT_THAT(log(), HasSubstr("warning: more was found than is told one by one more=9960 "
                               "of=10000\n"));
  EXPECT_THAT(log(), HasSubstr("info: settings loaded state-dir=" + state_.path +
                               " reports=10000 findings=10000\n"));
  EXPECT_EQ(state("findings"), "10000");
  const std::string listed = list();
  EXPECT_EQ(std::ranges::count(listed, '\n'), 101);
  EXPECT_THAT(listed, HasSubstr("\nand more: 10000 in all\n"));
}

TEST_F(Findings, OfAnEditAreWhatDiffers) {
  std::string text = edited("IKE_PORT=500", "IKE_PORT=501");
  const std::string secret = "example secret, change it";
  text.replace(text.find(secret), secret.size(), "open sesame");
  text.replace(text.find("NAME=bob"), 8, "NAME=eve");
  startWithEdit(text);
  const std::string words = "the settings file has another value than what was saved last";
  EXPECT_EQ(state("degraded"), "no");
  EXPECT_THAT(
      log(),
      AllOf(HasSubstr("notice: " + words + " parameter=IKE.IKE_PORT was=500 value=501\n"),
            HasSubstr(words + " parameter=IKE.QCD_SECRET was=\"(differs, hidden)\" "
                              "value=\"(differs, hidden)\"\n"),
            HasSubstr(" parameter=USERS[eve] was=\"(no such user)\""),
            HasSubstr(" parameter=USERS[bob] was=\"(a user)\""), HasSubstr(" differences=4\n"),
            Not(HasSubstr("sesame")), Not(HasSubstr("example secret"))));
  EXPECT_EQ(state("findings"), "4");
  EXPECT_THAT(list(),
              AllOf(StartsWith("IKE.IKE_PORT: " + words + " (value \"501\", was \"500\")\n"),
                    Not(HasSubstr("sesame")), Not(HasSubstr("example secret"))));
  save();
  EXPECT_EQ(state("findings"), "0");
}

TEST_F(Findings, OfAFileThatMakesTheAgentDegradedSayWhatDiffersToo) {
  startWithEdit(edited("IKE_PORT=500", "IKE_PORT=501\n        FOO=1"));
  EXPECT_NE(state("degraded"), "no");
  EXPECT_THAT(list(), AllOf(HasSubstr("line 6, column 9: IKE.FOO: "),
                            HasSubstr("IKE.IKE_PORT: the settings file has another value")));
}

TEST_F(Findings, OfUsersAreNamesThatAreMissingOrTakenAndMoreThanAWriteMayLeave) {
  std::string text = edited("NAME=bob", "NAME=");
  const std::string second = "        /USER=\n            NAME=alice\n        end=\n";
  text.insert(text.find("    end=\nend=\n"), second);
  state_.write(SETTINGS, text);
  start({"--max-users", "2"});
  EXPECT_EQ(state("degraded"), "no");
  EXPECT_THAT(list(), AllOf(HasSubstr("USERS[1]: the user has no name\n"),
                            HasSubstr("USERS[alice]: another user has the same name"),
                            HasSubstr("USERS[alice]: there are more users than a write may leave "
                                      "(expected \"at most 2\")\n")));
  EXPECT_THAT(log(), HasSubstr("warning: the user has no name line="));
  save();
  EXPECT_THAT(list(), HasSubstr("USERS[1]: the user has no name\n")) << "the file still has it";
}

// What no write may add may stay, and is told.
TEST_F(Findings, OfAValueThatNoWriteMaySetDoNotKeepItsGroupFromBeingWritten) {
  state_.write(SETTINGS, edited("PSK_NAME=\n", "PSK_NAME=a\tb\n"));
  start();
  EXPECT_THAT(
      log(), AllOf(HasSubstr("warning: the text holds control characters, which no write may add "),
                   HasSubstr(" column=18 parameter=POLICY.PSK_NAME text=\"a\\x09b\"\n")));
  set("POLICY.PMP_TIMEOUT=77");
  save();
  EXPECT_EQ(get("POLICY.PSK_NAME"), "a\tb\n");
  EXPECT_EQ(state("findings"), "1");  // the file still has it
  set("POLICY.PSK_NAME=ab");
  save();
  EXPECT_EQ(state("findings"), "0");
  EXPECT_EQ(stop(), 0);
  EXPECT_EQ(linesWith("control characters"), 1u);
}

// A text with a line end is another text, or another setting, once it is read back.
TEST_F(Findings, OfASaveAreWhatTheNextStartWouldNotGiveBack) {
  state_.write(SETTINGS, exampleSettings());
  start({"--accept-any"});
  testing_support::Settings settings;
  settings.policyGroup.PSK_NAME.value = "key\n        PMP_TIMEOUT=77";
  settings.ikeGroup.QCD_SECRET.value = "open\nsesame";
  settings.ikeGroup.MAX_HALFOPEN.value = 257;
  write(settings.policyGroup);
  write(settings.ikeGroup);
  save();
  EXPECT_THAT(list(), AllOf(HasSubstr("POLICY.PMP_TIMEOUT: this is given once more"),
                            HasSubstr("IKE.MAX_HALFOPEN: "), Not(HasSubstr("sesame"))));
  save();  // nothing new
  EXPECT_EQ(stop(), 0);
  const std::string words = "the settings file cannot hold the value; the next start takes another";
  EXPECT_THAT(
      log(),
      AllOf(HasSubstr("warning: " + words + " one parameter=IKE.MAX_HALFOPEN was=257 value=256\n"),
            HasSubstr(words + " one parameter=IKE.QCD_SECRET was=\"(differs, hidden)\" "),
            HasSubstr(words + " one parameter=POLICY.PSK_NAME was=\"key\\x0a        PMP_TIMEOUT="
                              "77\" value=key\n"),
            Not(HasSubstr("sesame"))));
  EXPECT_EQ(linesWith(words), 3u);
  start({"--accept-any"});
  EXPECT_EQ(get("POLICY.PSK_NAME"), "key\n");
  EXPECT_EQ(get("IKE.MAX_HALFOPEN"), "256\n");
}

// Pretty-printed: the content of an element begins and ends with a line end.
TEST_F(Findings, OfImportedSettingsThatAFileCannotHoldMakeTheAgentDegraded) {
  const std::string document =
      "<LocalSettings><Module Name=\"USER_ACT_MODULE_ID\">\n"
      "  <Param Name=\"LOCAL_CERT_FOR_PM_SUBJECT\">\n    CN=Gateway\n  </Param>\n"
      "</Module></LocalSettings>\n";
  state_.write("localsettings.xml", document);
  for (int i = 0; i < 2; ++i) {  // the next start takes it again
    start();
    EXPECT_EQ(state("degraded"),
              "the settings of earlier versions hold what a settings file cannot "
              "(POLICY.LOCAL_CERT_SUBJECT); they are kept");
    EXPECT_THAT(list(), HasSubstr("POLICY.LOCAL_CERT_SUBJECT: the settings file cannot hold"));
    EXPECT_EQ(ctl({"save"}).exitCode, programs::EXIT_IO);
    EXPECT_EQ(stop(), 0);
    EXPECT_EQ(state_.text(SETTINGS), "(absent)");
    EXPECT_EQ(state_.text("localsettings.xml.importing"), document);
  }
  start();
  set("POLICY.LOCAL_CERT_SUBJECT=CN=Gateway");
  EXPECT_EQ(ctl({"save", "--force"}), (Outcome{0, "saved\n"}));
  EXPECT_EQ(state("findings"), "0");
  EXPECT_EQ(stop(), 0);
  start();
  EXPECT_EQ(state("degraded"), "no");
  EXPECT_EQ(get("POLICY.LOCAL_CERT_SUBJECT"), "CN=Gateway\n");
}

}  // namespace
}  // namespace safety
