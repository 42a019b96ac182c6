// What shells are told that a word could become.
#include <map>
#include <regex>
#include <sstream>

#include "tests/client/verbs/client_test.h"

namespace system_testing {
namespace {

using client_testing::runClient;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::UnorderedElementsAreArray;
using Words = std::vector<std::string>;

constexpr const char* NO_AGENT = "LPARAMS_SOCKET=/nonexistent";

Words linesOf(const std::string& text) {
  Words lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

/// "words" and what the last word could become, or "files" and what it keeps.
Words completed(Words words, const std::string& variable = NO_AGENT) {
  words.insert(words.begin(), "complete");
  const Outcome outcome = runClient(words, {.variable = variable});
  EXPECT_EQ(outcome, printed(outcome.out)) << testing::PrintToString(words);
  return linesOf(outcome.out);
}

/// Only words.
Words offered(const Words& words, const std::string& variable = NO_AGENT) {
  Words lines = completed(words, variable);
  EXPECT_THAT(lines, Contains("words")) << testing::PrintToString(words);
  if (!lines.empty()) lines.erase(lines.begin());
  return lines;
}

/// What the help of a verb, or of the command line, tells.
struct Help {
  Words verbs;
  Words options;
  Words taking;  ///< options that take a value
  size_t arguments = 0;
};

Help helpOf(Words verb) {
  verb.emplace_back("--help");
  Help help;
  std::string part;
  for (const std::string& line : linesOf(runClient(verb).out)) {
    std::smatch found;
    if (std::regex_match(line, found, std::regex("(\\w+):"))) part = found[1];
    if (line.empty()) part.clear();
    if (part == "Positionals" && std::regex_search(line, std::regex("^  \\S"))) ++help.arguments;
    if (part == "Subcommands" && std::regex_search(line, found, std::regex("^  (\\S+)"))) {
      help.verbs.push_back(found[1]);
    }
    if (part == "Options" &&
        std::regex_search(line, found, std::regex("^  (?:-\\w,)?(--[\\w-]+)( [A-Z.]+\\b)?"))) {
      help.options.push_back(found[1]);
      if (found[2].matched) help.taking.push_back(found[1]);
    }
  }
  return help;
}

Words operator+(Words words, const std::string& word) {
  words.push_back(word);
  return words;
}

/// Everything that the help tells is completed, and each argument is of a kind that is known.
void checkVerb(const Words& verb, const Words& general) {
  SCOPED_TRACE(testing::PrintToString(verb));
  const Help help = helpOf(verb);
  EXPECT_THAT(offered(verb + "-"), IsSupersetOf(help.options));
  EXPECT_THAT(offered(verb + "-"), IsSupersetOf(general));
  for (const std::string& option : help.taking) {
    completed(verb + option + "");
    completed(verb + (option + "="));
  }
  if (!help.verbs.empty()) {
    EXPECT_THAT(offered(verb + ""), UnorderedElementsAreArray(help.verbs));
  }
  Words words = verb;
  for (size_t i = 0; i < help.arguments; ++i) {
    completed(words + "");
    words.emplace_back("x");
  }
  for (const std::string& next : help.verbs) checkVerb(verb + next, general);
}

TEST(Complete, KnowsAllThatTheHelpTells) {
  const Help help = helpOf({});
  EXPECT_THAT(help.verbs, IsSupersetOf({"list", "user", "fmt"}));
  EXPECT_THAT(help.taking, ElementsAre("--socket", "--timeout", "--file"));
  EXPECT_THAT(helpOf({"user", "set"}).taking, ElementsAre("--message"));
  EXPECT_EQ(helpOf({"user", "set"}).arguments, 2u);
  checkVerb({}, help.options);
}

TEST(Complete, VerbsAndOptions) {
  EXPECT_THAT(offered({"stat"}), ElementsAre("status"));
  EXPECT_THAT(offered({"user", "re"}), ElementsAre("rename"));
  EXPECT_THAT(offered({"list", "--un"}), ElementsAre("--unsaved"));
  EXPECT_THAT(offered({"list", "--so"}), ElementsAre("--socket"));
  EXPECT_THAT(offered({"--socket", "/x", "--timeout=3", "stat"}), ElementsAre("status"));
  EXPECT_THAT(offered({"list", "*PORT*", "stat"}), IsEmpty());
  EXPECT_THAT(offered({"nonsense", "stat"}), IsEmpty());
  EXPECT_THAT(offered({"--nonsense", "stat"}), ElementsAre("status"));
  EXPECT_THAT(offered({"--nonsense=x", "--nonsense="}), IsEmpty());
  EXPECT_THAT(offered({"list", "--", "--un"}), IsEmpty());
}

TEST(Complete, NamesAndValuesThatTheProgramKnows) {
  EXPECT_THAT(offered({"get", "IKE.IKE_P"}), ElementsAre("IKE.IKE_PORT"));
  EXPECT_THAT(offered({"get", "--json", "IKE.NATT_PORT", "IKE.IKE_P"}),
              ElementsAre("IKE.IKE_PORT"));
  EXPECT_THAT(offered({"show", ""}),
              ElementsAre("IKE", "LOG", "UPDATE", "POLICY", "ADMIN", "USERS"));
  EXPECT_THAT(offered({"show", "IKE", ""}), IsEmpty());
  EXPECT_THAT(offered({"revert", "POL"}), Contains("POLICY.PMP_TIMEOUT"));
  EXPECT_THAT(offered({"set", "IKE.IKE_P"}), ElementsAre("IKE.IKE_PORT="));
  EXPECT_THAT(offered({"set", "IKE.IKE_PORT="}), IsEmpty());
  EXPECT_THAT(
      offered({"set", "IKE.IKE_PORT=501", "IKE.IPSEC_TFC_PADDING=TFC"}),
      ElementsAre("IKE.IPSEC_TFC_PADDING=TFC_PADDING_OFF", "IKE.IPSEC_TFC_PADDING=TFC_PADDING_ON"));
  EXPECT_THAT(offered({"set", "--save", "IKE.PERSISTENT_SA="}),
              ElementsAre("IKE.PERSISTENT_SA=0", "IKE.PERSISTENT_SA=1"));
  EXPECT_THAT(offered({"set", "USERS[anna].PMP_AUTH="}),
              ElementsAre("USERS[anna].PMP_AUTH=PMPAUTH_SIG", "USERS[anna].PMP_AUTH=PMPAUTH_PSK"));
  EXPECT_THAT(offered({"set", "NO.SUCH="}), IsEmpty());
  EXPECT_THAT(offered({"set", "--ask", "IKE.QCD"}), ElementsAre("IKE.QCD_SECRET"));
  EXPECT_THAT(offered({"set", "--ask=IKE.QCD"}), ElementsAre("--ask=IKE.QCD_SECRET"));
  EXPECT_THAT(offered({"user", "add", ""}), IsEmpty());
  EXPECT_THAT(offered({"user", "add", "anna", "PMP_AUTH"}),
              ElementsAre("PMP_AUTH=", "PMP_AUTH_MODE="));
  EXPECT_THAT(offered({"user", "set", "anna", "PMP_AUTH="}),
              ElementsAre("PMP_AUTH=PMPAUTH_SIG", "PMP_AUTH=PMPAUTH_PSK"));
  EXPECT_THAT(offered({"user", "show", ""}), IsEmpty());
  EXPECT_THAT(offered({"rollback", ""}), IsEmpty());
}

TEST(Complete, FilesOnlyWhereOneIsWanted) {
  EXPECT_THAT(completed({"check", "/et"}), ElementsAre("files", ""));
  EXPECT_THAT(completed({"check", "a.ini", ""}), ElementsAre("files", ""));
  EXPECT_THAT(completed({"--file", ""}), ElementsAre("files", ""));
  EXPECT_THAT(completed({"--file=/et"}), ElementsAre("files", "--file="));
  EXPECT_THAT(completed({"diff", "--file", ""}), ElementsAre("files", ""));
  EXPECT_THAT(completed({"apply", "--message", "why", ""}), ElementsAre("files", ""));
  EXPECT_THAT(completed({"set", "IKE.QCD_SECRET=@/et"}), ElementsAre("files", "IKE.QCD_SECRET=@"));
  EXPECT_THAT(offered({"set", "IKE.QCD_SECRET=@@/et"}), IsEmpty());
  EXPECT_THAT(offered({"apply", "--message", ""}), IsEmpty());
  EXPECT_THAT(offered({"apply", "--confirm", ""}), IsEmpty());
}

TEST_F(Client, CompleteAsksTheAgent) {
  const std::string agent = "LPARAMS_SOCKET=" + socketPath;
  EXPECT_THAT(offered({"user", "show", ""}, agent), ElementsAre("alice", "bob"));
  EXPECT_THAT(offered({"user", "del", "alice", "b"}, agent), ElementsAre("bob"));
  EXPECT_THAT(offered({"user", "rename", "alice", ""}, agent), IsEmpty());
  EXPECT_THAT(offered({"show", "USERS"}, agent),
              ElementsAre("USERS", "USERS[alice]", "USERS[bob]"));
  EXPECT_THAT(offered({"get", "USERS[a"}, agent), ElementsAre("USERS[alice]."));
  EXPECT_THAT(offered({"set", "USERS[alice].PMP_AUTH"}, agent),
              ElementsAre("USERS[alice].PMP_AUTH=", "USERS[alice].PMP_AUTH_MODE="));
  EXPECT_THAT(offered({"--socket", socketPath, "user", "show", ""}), ElementsAre("alice", "bob"));
  EXPECT_THAT(offered({"user", "show", "--socket=" + socketPath, ""}), ElementsAre("alice", "bob"));
  out({"set", "--save", "IKE.IKE_PORT=501"});
  out({"set", "--save", "IKE.IKE_PORT=502"});
  EXPECT_THAT(offered({"rollback", ""}, agent), IsSupersetOf({"1", "2"}));
  EXPECT_THAT(offered({"diff", "--revision", "2"}, agent), ElementsAre("2"));
}

TEST_F(Client, CompleteLeavesOutWhatDoesNotShowWhatItIs) {
  out({"user", "add", "--bytes", "an\xC2\x9Bna"});
  EXPECT_THAT(out({"user", "list"}), HasSubstr("na\n"));
  EXPECT_THAT(offered({"user", "show", ""}, "LPARAMS_SOCKET=" + socketPath),
              ElementsAre("alice", "bob"));
}

TEST_F(Client, CompleteAsksTheFileInPlaceOfTheAgent) {
  const std::string file = directory.path + "settings.ini";
  host::writeFile(file, sourceFile("examples/localsettings.ini"));
  EXPECT_THAT(offered({"--file", file, "user", "show", "a"}), ElementsAre("alice"));
  EXPECT_THAT(offered({"--file", file, "rollback", ""}), IsEmpty());
  EXPECT_THAT(offered({"--file", "/nonexistent", "show", "US"}), ElementsAre("USERS"));
}

}  // namespace
}  // namespace system_testing
