// What the documents list is what there is.
#include <algorithm>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "programs/exit_status.h"
#include "tests/system/safety/agent_test.h"

namespace safety {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

class Documents : public AgentTest {
 protected:
  static std::string document(const std::string& name) {
    std::ifstream file(SOURCE_DIR "/docs/" + name);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  /// What the expression's group matches in the text.
  static std::set<std::string> all(const std::string& text, const std::string& expression) {
    const std::regex regex(expression);
    std::set<std::string> found;
    for (std::sregex_iterator match(text.begin(), text.end(), regex), end; match != end; ++match) {
      found.insert((*match)[1].str());
    }
    return found;
  }
};

TEST_F(Documents, ListEveryFieldOfTheState) {
  start();
  const auto fields = all(ctl({"status"}).output, "(?:^|\n)([A-Za-z]+): ");
  EXPECT_GT(fields.size(), 10U);
  const std::string protocol = document("bridge-protocol.md");
  for (const std::string& field : fields) EXPECT_THAT(protocol, HasSubstr("`" + field + "`"));
}

TEST_F(Documents, NameNoOptionThatIsNotThere) {
  std::string help = runAgent({"--help"}).output;
  for (const Arguments& command : {Arguments{}, {"save"}, {"status"}, {"show"}, {"apply"}}) {
    Arguments arguments = command;
    arguments.push_back("--help");
    help += ctl(arguments).output;
  }
  // What is said of the tools of the source tree is not of these programs.
  const std::string text =
      std::regex_replace(document("operations.md"), std::regex("`(\\./dev|cmake) [^`]*`"), "");
  const auto named = all(text, "(--[a-z][a-z-]+)");
  EXPECT_GT(named.size(), 8U);
  for (const std::string& option : named) {
    EXPECT_NE(help.find(option + " "), std::string::npos) << option;
  }
}

TEST_F(Documents, StateHowManyRevisionsAreKept) {
  const auto kept = all(runAgent({"--help"}).output, "--history [^\n]*=([0-9]+)\n");
  ASSERT_EQ(kept.size(), 1U);
  EXPECT_THAT(document("operations.md"),
              HasSubstr("The newest " + *kept.begin() + " are kept\n(`--history`)"));
}

// Of the help, and of the manual page that is made of it.
TEST_F(Documents, ListTheAgentsOptionsInAnOrderThatStays) {
  const std::string help = runAgent({"--help"}).output;
  const std::regex option("\n  (?:-h,)?(--[a-z-]+)");
  std::vector<std::string> options;
  for (std::sregex_iterator match(help.begin(), help.end(), option), end; match != end; ++match) {
    options.push_back((*match)[1].str());
  }
  EXPECT_THAT(options, ElementsAre("--help", "--version", "--state-dir", "--socket", "--module",
                                   "--admin-group", "--max-users", "--history", "--accept-any",
                                   "--allow-defaults", "--save-on-exit", "--journal"));
}

TEST_F(Documents, ListEveryExitStatus) {
  std::set<std::string> statuses;
  for (const int status :
       {programs::EXIT_OK, programs::EXIT_USAGE, programs::EXIT_ILLEGAL, programs::EXIT_UNAVAILABLE,
        programs::EXIT_STUCK, programs::EXIT_IO, programs::EXIT_TRY_AGAIN,
        programs::EXIT_NOT_AUTHORISED, programs::EXIT_BAD_FILE}) {
    statuses.insert(std::to_string(status));
  }
  EXPECT_EQ(all(document("operations.md"), "\n\\| ([0-9]+) \\|"), statuses);
  // The help also has those that stand apart in the document.
  statuses.insert({std::to_string(programs::EXIT_DIFFERS), std::to_string(programs::EXIT_CHANGED)});
  EXPECT_EQ(all(programs::EXIT_STATUSES, "\n +([0-9]+)  "), statuses);
}

}  // namespace
}  // namespace safety
