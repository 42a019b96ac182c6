// What is said of documents.
#include <gmock/gmock.h>

#include <string>

#include "checking/check.h"
#include "tests/checking/checked_lines.h"

namespace checking {
namespace {

using checking_testing::linesOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

TEST(DocumentCheck, OfLegalDocumentsSaysNothing) {
  EXPECT_THAT(linesOf("# a comment\n\nIKE.IKE_PORT=500\nUSERS[bob].PMP_TIMEOUT=20\n"), IsEmpty());
  EXPECT_THAT(linesOf(R"({"IKE": {"IKE_PORT": 500, "PERSISTENT_SA": true, "QCD_SECRET": null},
                          "USERS": {"bob": {"PMP_TIMEOUT": 20}, "eve": {}}})"),
              IsEmpty());
}

TEST(DocumentCheck, TellsEveryMistakeOfLines) {
  EXPECT_THAT(linesOf("IKE.IKE_PROT=1\nIKE.IKE_PORT=0\nno assignment\nIKE.IKE_PORT=1\n"
                      "IKE=1\nUSERS[bob].PMP_TIMEOUT=1\nIKE.QCD_SECRET=s3\tcret\n"),
              ElementsAre("1:1: error: IKE.IKE_PROT: no such parameter; did you mean IKE.IKE_PORT?",
                          "2:1: error: IKE.IKE_PORT: \"0\" is not a whole number from 1 to 65535",
                          "3:1: error: this is no assignment; write GROUP.NAME=VALUE",
                          "4:1: error: IKE.IKE_PORT: given twice (first in line 2)",
                          "5:1: error: IKE: not a single parameter",
                          "6:1: error: USERS[bob].PMP_TIMEOUT: \"1\" is not a whole number from 5 "
                          "to 4294967295",
                          "7:1: error: IKE.QCD_SECRET: the value is not one line of text without "
                          "control characters"));
}

TEST(DocumentCheck, TellsEveryMistakeOfJson) {
  const auto lines = linesOf(
      "{\"IKE\": {\"IKE_PORT\": 70000,\n\"IKE_PROT\": null},\n"
      "\"USERS\": {\"\": {}, \"a\\nb\": {\"PMP_TIMEOUT\": \"x\"}},\n\"LOG\": 5}");
  EXPECT_THAT(lines, Contains("1:10: error: IKE.IKE_PORT: \"70000\" is not a whole number from 1 "
                              "to 65535"));
  EXPECT_THAT(lines, Contains("2:1: error: IKE.IKE_PROT: no such parameter; did you mean "
                              "IKE.IKE_PORT?"));
  EXPECT_THAT(lines, Contains("3:11: error: USERS: a user needs a name"));
  EXPECT_THAT(lines, Contains(HasSubstr("error: USERS[a\\x0ab]: the name is not one line")));
  EXPECT_THAT(lines, Contains(HasSubstr("error: USERS[a\\x0ab].PMP_TIMEOUT: \"x\" is not")));
  EXPECT_THAT(lines, Contains(HasSubstr("4:8: error: LOG: expected an object, not a value")));
  EXPECT_THAT(linesOf("{\"IKE\": "), ElementsAre(HasSubstr("this is not JSON")));
}

// As it is applied.
TEST(DocumentCheck, KnowsTheKindsOfJson) {
  EXPECT_THAT(linesOf(R"({"LOG": {"LANGUAGE": 1, "FILELOG_ON": 1, "WALL_ON": true},
                          "USERS": {"bob": {"NAME": "bob"}}})"),
              IsEmpty());
  EXPECT_THAT(
      linesOf("{\"LOG\": {\"LANGUAGE\": 9,\n\"ENCODING_TO\": true},\n"
              "\"POLICY\": {\"PSK_NAME\": 5},\n\"USERS\": {\"bob\": {\"NAME\": \"eve\"}}}"),
      ElementsAre("1:10: error: LOG.LANGUAGE: \"9\" is not one of LOG_LANG_ENG, LOG_LANG_RUS",
                  testing::StartsWith("2:1: error: LOG.ENCODING_TO: \"true\" is not one of"),
                  "3:12: error: POLICY.PSK_NAME: \"5\" is no text; write it in quotes",
                  "4:19: error: USERS[bob].NAME: \"eve\" is not the name that the user goes "
                  "by here"));
}

TEST(DocumentCheck, TellsMoreThanAHundredMistakes) {
  std::string text = "IKE.IKE_PORT=500\n";
  for (int i = 0; i < 1000; ++i) text += "nothing\n";
  EXPECT_EQ(check(text).remarks.size(), 1000u);
}

TEST(DocumentCheck, CountsWhatItLeavesOut) {
  const Checked checked = check("IKE=1\nno assignment\nLOG=1\n", 2);
  EXPECT_EQ(checked.remarks.size(), 2u);
  EXPECT_EQ(checked.leftOut, 1u);
}

TEST(DocumentCheck, ShowsTheFirstTwoHundredBytesOfAValue) {
  EXPECT_THAT(linesOf("IKE.IKE_PORT=" + std::string(201, '7')),
              ElementsAre("1:1: error: IKE.IKE_PORT: \"" + std::string(200, '7') +
                          "\" is not a whole number from 1 to 65535"));
}

TEST(DocumentCheck, LooksAtTextsAndUsersAsAWriteDoes) {
  EXPECT_THAT(linesOf("POLICY.PSK_NAME=" + std::string(65'536, 'x')), IsEmpty());
  std::string text = "POLICY.PSK_NAME=" + std::string(65'537, 'x') + "\n";
  for (int i = 0; i < 4097; ++i) text += "USERS[u" + std::to_string(i) + "].PMP_TIMEOUT=20\n";
  EXPECT_THAT(linesOf(text),
              ElementsAre("1:1: error: POLICY.PSK_NAME: a text of 65537 bytes is too long; "
                          "expected at most 65536",
                          "4098:1: warning: USERS[u4096]: more users than an agent takes (4096)"));
}

TEST(DocumentCheck, IsUsableAndHasNoSettings) {
  const Checked checked = check("IKE.IKE_PORT=0\n");
  EXPECT_TRUE(checked.usable);
  EXPECT_EQ(checked.settings, nullptr);
}

}  // namespace
}  // namespace checking
