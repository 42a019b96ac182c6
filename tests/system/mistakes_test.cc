// A settings file written by hand, with mistakes: it loads, and each mistake is told in one line.
#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/readable_bytes.h"
#include "tests/system/system_test.h"

using client_testing::printed;
using testing_support::inQuotes;

namespace system_testing {
namespace {

struct Mistake {
  std::string right;  ///< the line of the example; the mistake stands in its place
  std::string wrong;
  std::vector<std::string> words;  ///< of the one line of the log that tells of it
};

const std::string IGNORED = "no such parameter or block; its value was ignored";
const std::string MISSING = "has fewer members in the file than it should";
const std::string KEPT = "cannot be read; the parameter kept its value";
const std::string DEFAULTED = "has no such name; the parameter took its default";
const std::string JOINED = "the line became a part of one before it";
const std::string EXTRA = "is followed by more text, which was ignored";

const Mistake MISTAKES[] = {
    // Numbers.
    {"IKE_PORT=500",
     "IKE_PORT=abc",
     {KEPT, "parameter=IKE.IKE_PORT", "text=abc", "from 1 to 65535", "value=500"}},
    {"NATT_PORT=4500",
     "NATT_PORT=70000",
     {KEPT, "parameter=IKE.NATT_PORT", "text=70000", "from 1 to 65535", "value=4500"}},
    {"EXCHANGE_TIMEOUT=90",
     "EXCHANGE_TIMEOUT=90 seconds",
     {EXTRA, "parameter=IKE.EXCHANGE_TIMEOUT", "line=7", "column=26", "text=\"90 seconds\"",
      "value=90"}},
    {"MAX_LOG_SIZE=52428800",
     "MAX_LOG_SIZE=50.5",
     {EXTRA, "parameter=LOG.MAX_LOG_SIZE", "text=50.5", "value=50"}},
    {"DPD_IDLE_TIME=45",
     "DPD_IDLE_TIME=45\r",
     {EXTRA, "parameter=IKE.DPD_IDLE_TIME", "text=\"45\\x0d\""}},
    {"SESSION_EXPTIME=30",
     "SESSION_EXPTIME=\"30\"",
     {KEPT, "parameter=ADMIN.SESSION_EXPTIME", "text=\"\\\"30\\\"\"", "0 to 86400"}},
    // Flags.
    {"FILELOG_ON=1",
     "FILELOG_ON=yes",
     {KEPT, "parameter=LOG.FILELOG_ON", "text=yes", "0 or 1", "value=1"}},
    {"PERSISTENT_SA=0",
     "PERSISTENT_SA=2",
     {KEPT, "parameter=IKE.PERSISTENT_SA", "text=2", "0 or 1", "value=0"}},
    // Names of values.
    {"IKE1_STATUS=IKE_STATUS_RESPONDER",
     "IKE1_STATUS=IKE_STATUS_MAYBE",
     {DEFAULTED, "parameter=IKE.IKE1_STATUS", "text=IKE_STATUS_MAYBE",
      "IKE_STATUS_DISABLED, IKE_STATUS_ENABLED, IKE_STATUS_RESPONDER", "value=IKE_STATUS_ENABLED"}},
    {"ENCODING_TO=CONVI_UTF8",
     "ENCODING_TO=6",
     {DEFAULTED, "parameter=LOG.ENCODING_TO", "text=6", "CONVI_UTF8"}},
    {"DDP_LOGLEVEL=_LL_EVENTS",
     "DDP_LOGLEVEL= _LL_EVENTS",
     {DEFAULTED, "parameter=POLICY.DDP_LOGLEVEL", "text=\" _LL_EVENTS\""}},
    {"SETTING=UpSrv::LOCAL",
     "SETTING=",
     {DEFAULTED, "parameter=UPDATE.SETTING", "text=\"\"", "value=UpSrv::DISABLED"}},
    {"PMP_AUTH_MODE=PMPAUTH_AM",
     "PMP_AUTH_MODE=fast",
     {DEFAULTED, "parameter=USERS[bob].PMP_AUTH_MODE", "text=fast"}},
    // Keys.
    {"BACKUP_DEPTH=10",
     "BACKUP_DEPTH=10\nBACKUP_DEPHT=10",
     {IGNORED, "parameter=LOG.BACKUP_DEPHT"}},
    {"LANGUAGE=LOG_LANG_ENG",
     "LANGUAGE=LOG_LANG_ENG\nLanguage=LOG_LANG_ENG",
     {IGNORED, "parameter=LOG.Language"}},
    {"WALL_ON=0", "WALL_ON=0\nWALL_ON =1", {IGNORED, "parameter=\"LOG.WALL_ON \""}},
    {"PATH=", "PATH=\n        = nothing", {IGNORED, "parameter=UPDATE."}},
    {"PSK_NAME=",
     "PSK_NAME=\n# a comment\nPSK=x",
     {IGNORED, "parameter=\"POLICY.(15 bytes, not shown)\""}},
    {"ADMIN_GROUP=gateway-admins",
     "ADMIN_GROUP=gateway-admins\nADM\x1B[2JIN\xFF=1",
     {IGNORED, "parameter=\"ADMIN.(10 bytes, not shown)\""}},
    {"VERIFY_DOWNLOADS=1\n", "", {MISSING, "parameter=UPDATE", "missing=VERIFY_DOWNLOADS"}},
    // Blocks.
    {"    /ADMIN=\n", "    /PROXY=\n    end=\n    /ADMIN=\n", {IGNORED, "parameter=PROXY"}},
    {"    /USERS=\n", "    /USERS=\n        NAME=x\n", {IGNORED, "parameter=USERS.NAME"}},
};

/// The example with all mistakes in it.
std::string settingsWithMistakes() {
  std::string text = sourceFile("examples/localsettings.ini");
  for (const Mistake& mistake : MISTAKES) {
    const size_t at = text.find(mistake.right + (mistake.right.ends_with('\n') ? "" : "\n"));
    if (at == std::string::npos) throw std::runtime_error("not in the example: " + mistake.right);
    text.replace(at, mistake.right.size(), mistake.wrong);
  }
  return text;
}

TEST_F(SystemTest, LoadsAFileWithMistakesAndTellsEachInOneLine) {
  ASSERT_GE(std::size(MISTAKES), 20U);
  host::writeFile(settingsPath, settingsWithMistakes());
  start();

  std::vector<std::string> reports;
  for (const std::string& line : agent->logLines()) {
    if (line.starts_with("lparams_agent: warning: ")) reports.push_back(line);
  }
  for (const Mistake& mistake : MISTAKES) {
    const std::string line = lineWith(reports, mistake.words);
    EXPECT_NE(line, "") << "nothing is told of " << inQuotes(mistake.wrong);
    std::erase(reports, line);
  }
  // The module does not report what became of the line behind the comment.
  const std::string taken = lineWith(reports, {JOINED, "parameter=POLICY"});
  EXPECT_NE(taken, "");
  std::erase(reports, taken);
  EXPECT_TRUE(reports.empty()) << "is told besides: " << reports.front();
  EXPECT_NE(lineWith(agent->logLines(),
                     {"info: settings loaded", "reports=" + std::to_string(std::size(MISTAKES)),
                      "findings=" + std::to_string(std::size(MISTAKES) + 1)}),
            "");

  // What is right beside a mistake has been taken.
  EXPECT_EQ(ctl({"get", "IKE.EXCHANGE_TIMEOUT"}), printed("90\n"));
  EXPECT_EQ(ctl({"get", "IKE.IKE_PORT"}), printed("500\n"));
  EXPECT_EQ(ctl({"get", "IKE.MAX_HALFOPEN"}), printed("128\n"));
  EXPECT_EQ(ctl({"get", "LOG.BACKUP_DEPTH"}), printed("10\n"));
  EXPECT_EQ(ctl({"get", "POLICY.PMP_TIMEOUT"}), printed("30\n"));
  EXPECT_EQ(ctl({"get", "ADMIN.ADMIN_GROUP"}), printed("gateway-admins\n"));
  EXPECT_EQ(ctl({"get", "USERS[1].PMP_PSK_NAME"}), printed("bob's key\n"));
}

TEST_F(SystemTest, TellsWhatKeepsAFileFromBeingLoaded) {
  const struct {
    const char* text;
    const char* reason;
  } rows[] = {
      {"# my settings\n/ROOT=\nend=\n", "it does not begin with /ROOT="},
      {"\n/ROOT=\nend=\n", "it does not begin with /ROOT="},
      {"/ROOT=\n    /LOG=\n        FACILITY=3\n", "2 of its blocks are not closed"},
      {"/ROOT=\n", "1 of its blocks are not closed"},
  };
  for (const auto& row : rows) {
    host::writeFile(settingsPath, row.text);
    EXPECT_EQ(exitStatusOf(arguments()), 78) << row.text;
    EXPECT_NE(lineWith(agent->logLines(), {"no complete settings", settingsPath, row.reason}), "")
        << row.text << agent->log();
    EXPECT_EQ(host::readFile(settingsPath), row.text) << "is left as it is";
  }
}

}  // namespace
}  // namespace system_testing
