// check: files, without an agent.
#include <algorithm>

#include "tests/client/verbs/client_test.h"

namespace system_testing {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class Check : public Client {
 protected:
  void SetUp() override {}

  /// The path of a file with that text.
  std::string file(const std::string& text, const std::string& name = "settings.ini") const {
    host::writeFile(directory.path + name, text);
    return directory.path + name;
  }

  static std::string example() { return sourceFile("examples/localsettings.ini"); }

  static std::string edited(const std::string& from, const std::string& to) {
    std::string text = example();
    return text.replace(text.find(from), from.size(), to);
  }
};

TEST_F(Check, OfFilesThatAreRightPrintsNothing) {
  EXPECT_EQ(client_testing::runClient({"check", SOURCE_DIR "/examples/localsettings.ini",
                                       SOURCE_DIR "/examples/localsettings.xml"}),
            printed(""));
  EXPECT_EQ(client_testing::runClient({"check", "-"}, {.in = example()}), printed(""));
  EXPECT_EQ(client_testing::runClient({"check", "-"}, {.in = "IKE.IKE_PORT=500\n"}), printed(""));
  EXPECT_EQ(client_testing::runClient({"check", "--json", "-"}, {.in = example()}),
            printed("[]\n"));
}

TEST_F(Check, CountsTheMistakesBeyondAHundredThousand) {
  std::string text = "IKE.IKE_PORT=500\n";
  for (int i = 0; i < 100'003; ++i) text += "x\n";
  const Outcome outcome = client_testing::runClient({"check", file(text)});
  EXPECT_EQ(outcome.exitCode, 65);
  EXPECT_EQ(std::ranges::count(outcome.out, '\n'), 100'001);
  EXPECT_TRUE(outcome.out.ends_with(": error: and 3 more\n"))
      << outcome.out.substr(0, 100) << outcome.err;
}

TEST_F(Check, PrintsEveryMistakeInALine) {
  std::string text = edited("IKE_PORT=500", "IKE_PORT=70000");
  text.replace(text.find("EXCHANGE_TIMEOUT=90"), 19, "EXCHANGE_TIMEOUT=2");
  text.replace(text.find("MAX_HALFOPEN="), 13, "MAX_HALFOPEN ");
  text.replace(text.find("NAME=bob"), 8, "NAME=alice");
  const std::string path = file(text);
  EXPECT_EQ(
      client_testing::runClient({"check", path}),
      (Outcome{65,
               path +
                   ":2:6: warning: IKE: the file lacks MAX_HALFOPEN, WNDSIZE_INITIATOR; the "
                   "load would keep the defaults\n" +
                   path +
                   ":5:18: error: IKE.IKE_PORT: \"70000\" is not a number from 1 to 65535; "
                   "the load would keep 500\n" +
                   path +
                   ":7:26: warning: IKE.EXCHANGE_TIMEOUT: 2 is below 5; the load would take "
                   "5\n" +
                   path + ":9:9: error: no \"=\"; this line and the next are read as one name\n" +
                   path +
                   ":10:9: error: IKE.WNDSIZE_INITIATOR: this line is read as a part of "
                   "line 9\n" +
                   path + ":105:13: warning: a second user \"alice\" (first in line 91)\n",
               ""}));
}

TEST_F(Check, EndsWithTheWorstOfAllFiles) {
  const std::string right = file(example(), "right");
  const std::string odd = file(edited("EXCHANGE_TIMEOUT=90", "EXCHANGE_TIMEOUT=2"), "odd");
  const std::string wrong = file(edited("IKE_PORT=500", "IKE_PORT=x"), "wrong");
  const std::string cut = file(example().substr(0, 200), "cut");
  const std::string refused = file(example() + "more\n", "refused");
  const auto statusOf = [](std::vector<std::string> files) {
    files.insert(files.begin(), "check");
    return client_testing::runClient(files).exitCode;
  };
  EXPECT_EQ(statusOf({right, odd}), 0);
  EXPECT_EQ(statusOf({wrong, odd}), 65);
  EXPECT_EQ(statusOf({refused, right}), 65);
  EXPECT_EQ(statusOf({cut, wrong}), 78);
  EXPECT_EQ(statusOf({file("<a/>", "other.xml")}), 78);
  EXPECT_EQ(statusOf({file("IKE.IKE_PORT=0\n", "lines")}), 65);

  const Outcome outcome =
      client_testing::runClient({"check", directory.path, "/nonexistent", cut, wrong});
  EXPECT_EQ(outcome.exitCode, 74);
  EXPECT_THAT(outcome.err, HasSubstr("lparamsctl: cannot read /nonexistent: No such file"));
  EXPECT_THAT(outcome.err, HasSubstr("lparamsctl: cannot read " + directory.path + ": "));
  EXPECT_THAT(outcome.out, HasSubstr(cut + ":"));
  EXPECT_THAT(outcome.out, HasSubstr(wrong + ":5:18: error: "));
}

TEST_F(Check, OfAFileThatIsTooLargeIsABadFile) {
  const std::string path = file(std::string(16 * 1024 * 1024 + 1, '\n'));
  EXPECT_EQ(client_testing::runClient({"check", path}),
            failed(78, path + " is larger than 16777216 bytes"));
}

TEST_F(Check, AsJsonIsOneArray) {
  const std::string path = file(edited("IKE_PORT=500", "IKE_PORT=70000"));
  const Outcome outcome = client_testing::runClient({"check", "--json", path, "/nonexistent"});
  EXPECT_EQ(outcome.exitCode, 74);
  EXPECT_EQ(json::parse(outcome.out),
            json::parse(R"([{"file": ")" + path + R"(", "line": 5, "column": 18,
                "severity": "error", "parameter": "IKE.IKE_PORT", "given": "70000", "taken": "500",
                "reported": true,
                "message": "\"70000\" is not a number from 1 to 65535; the load would keep 500"},
              {"file": "/nonexistent", "severity": "error",
                "message": "cannot read /nonexistent: No such file or directory"}])"));
}

TEST_F(Check, PrintsNothingThatDrivesATerminalAndNoSecret) {
  std::string text = edited("PSK_NAME=", "PSK_NAME=\x1b[2J\xff");
  const std::string secret = "QCD_SECRET=example secret, change it";
  text.replace(text.find(secret), secret.size(), "QCD_SECRET=tops\tecret");
  const Outcome outcome = client_testing::runClient({"check", file(text, "a\nb")});
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_THAT(outcome.out, StartsWith(directory.path + "a\\x0ab:19:20: warning: IKE.QCD_SECRET: "));
  EXPECT_THAT(outcome.out, HasSubstr("\"\\x1b[2J\\xff\" holds control characters"));
  EXPECT_THAT(outcome.out, Not(HasSubstr("tops")));
  const Outcome inJson = client_testing::runClient({"check", "--json", file(text, "a\nb")});
  EXPECT_EQ(json::parse(inJson.out).size(), 2u);
  EXPECT_THAT(inJson.out, Not(HasSubstr("tops")));
}

// What the load reports is what the agent logs of the same file.
TEST_F(Check, FindsWhatAnAgentFindsAtAStart) {
  const std::string text = edited("IKE_PORT=500", "IKE_PORT=70000\n        FOO=1\n# mine");
  host::writeFile(settingsPath, text);
  start();
  const json status =
      json::parse(client_testing::runClient({"check", "--json", "-"}, {.in = text}).out);
  for (const json& remark : status) {
    const std::string place = "line=" + std::to_string(remark["line"].get<int>()) +
                              " column=" + std::to_string(remark["column"].get<int>());
    EXPECT_THAT(agent->log(), HasSubstr(place));
  }
  EXPECT_THAT(agent->log(), HasSubstr("findings=" + std::to_string(status.size()) + "\n"));
}

TEST_F(Check, ThatCannotWriteItsOutputSaysSo) {
  const Outcome outcome = client_testing::runClient(
      {"check", file(edited("IKE_PORT=500", "IKE_PORT=x"))}, {.outputPath = "/dev/full"});
  EXPECT_EQ(outcome.exitCode, 74);
  EXPECT_EQ(outcome.err, "lparamsctl: cannot write the output\n");
}

}  // namespace
}  // namespace system_testing
