// What is said of settings of earlier versions.
#include <gmock/gmock.h>

#include <fstream>
#include <iterator>
#include <string>

#include "checking/check.h"
#include "tests/checking/checked_lines.h"

namespace checking {
namespace {

using namespace LPARAMS::Server;
using checking_testing::linesOf;
using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;

/// A document of one module with these parameters, each in a line of its own from the second on.
std::string document(const std::string& params, const std::string& module = "USER_ACT_MODULE_ID") {
  return "<LocalSettings><Module Name=\"" + module + "\">\n" + params + "</Module></LocalSettings>";
}

std::string param(const std::string& name, const std::string& value) {
  return "<Param Name=\"" + name + "\">" + value + "</Param>\n";
}

TEST(LegacyCheck, OfTheExampleSaysNothing) {
  std::ifstream file(SOURCE_DIR "/examples/localsettings.xml");
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  EXPECT_THAT(linesOf(text), IsEmpty());
  const Checked checked = check(text);
  EXPECT_TRUE(checked.usable);
  ASSERT_NE(checked.settings, nullptr);
  EXPECT_EQ(checked.settings->IKE->NATT_POLICY.value, NATT_POLICY_STD_FORCE);
  EXPECT_EQ(checked.settings->POLICY->PMP_SERVERS.value, "pmp1.example.com, pmp2.example.com");
}

TEST(LegacyCheck, SaysWhatTheImportWouldMakeOfValues) {
  const struct {
    std::string text;
    std::vector<std::string> lines;
  } rows[] = {
      {document(param("PMS_LOG_LEVEL", "7")),
       {R"(2:29: error: PMS_LOG_LEVEL: "7" is not one of 0, 1, 2, 3; the import would take _LL_EVENTS)"}},
      {document(param("PMS_LOG_LEVEL", "&lt;1")),
       {R"(2:29: error: PMS_LOG_LEVEL: "<1" is not one of 0, 1, 2, 3; the import would take _LL_DISABLED)"}},
      {document(param("PMS_LOG_LEVEL", "3")), {}},
      {document(param("PMS_LOG_LEVEL", "1") + param("PMS_LOG_LEVEL", "2")),
       {"3:29: warning: PMS_LOG_LEVEL: a second time (first in line 2); the later one counts"}},
      {document(param("ike_nat_t_policy", "1"), "ISAKMP_MODULE_ID"), {}},
      {document(param("ike_nat_t_policy", "9"), "ISAKMP_MODULE_ID"),
       {R"(2:32: error: ike_nat_t_policy: "9" is not one of 0, 1, 2, 3, 101, 102, 103; the import )"
        "would take NATT_POLICY_AUTO"}},
      {document(param("ike_nat_t_policy", ""), "ISAKMP_MODULE_ID"),
       {R"(2:2: error: ike_nat_t_policy: "" is not one of 0, 1, 2, 3, 101, 102, 103; the import )"
        "would take NATT_POLICY_DISABLED"}},
      {document(param("POLICY_SOURCE_TYPE", "3") + param("POLICY_SOURCE", "a")),
       {R"(2:34: error: POLICY_SOURCE_TYPE: "3" is not one of 1, 2; the import would leave it out, )"
        "and POLICY_SOURCE",
        " warning: the import would take nothing from the document"}},
      {document(param("PMS_LOG_LEVEL", "1") + param("POLICY_SOURCE_TYPE", "1")),
       {"3:34: warning: POLICY_SOURCE_TYPE: has no effect without POLICY_SOURCE in the same "
        "module"}},
      {document(param("PMS_LOG_LEVEL", "1") + param("POLICY_SOURCE", "a")),
       {"3:29: warning: POLICY_SOURCE: has no effect without POLICY_SOURCE_TYPE in the same "
        "module"}},
      {document(param("LOCAL_CERT_FOR_PM_SUBJECT", "\nCN=a\n")),
       {R"(2:41: error: LOCAL_CERT_FOR_PM_SUBJECT: "\x0aCN=a\x0a" holds a line end, which a )"
        "settings file cannot"}},
      {document(param("LOCAL_CERT_FOR_PM_SUBJECT", "a\tb")),
       {R"(2:41: warning: LOCAL_CERT_FOR_PM_SUBJECT: "a\x09b" holds control characters, which no )"
        "write may add"}},
      {document(param("LOCAL_CERT_FOR_PM_SUBJECT", "CN=a<!-- b -->c")),
       {"2:41: warning: LOCAL_CERT_FOR_PM_SUBJECT: the import would take the first text of the "
        "element only"}},
      {document(param("LOCAL_CERT_FOR_PM_SUBJECT", "<![CDATA[CN=a & b]]>")), {}},
  };
  for (const auto& row : rows) {
    EXPECT_THAT(linesOf(row.text), ElementsAreArray(row.lines)) << row.text;
  }
}

TEST(LegacyCheck, TellsWhatTheImportDoesNotKnow) {
  EXPECT_THAT(
      linesOf(document(param("PMS_LOG_LEVL", "1") + "<Parm/>\n<Param/>\n")),
      ElementsAre("2:2: warning: the import knows no parameter \"PMS_LOG_LEVL\", and leaves it "
                  "out; did you mean PMS_LOG_LEVEL?",
                  "3:2: warning: the import knows no element \"Parm\", and leaves it out; did you "
                  "mean Param?",
                  "4:2: warning: the import knows no parameter \"\", and leaves it out",
                  " warning: the import would take nothing from the document"));
  EXPECT_THAT(linesOf(document("", "OTHER_MODULE")),
              Contains("1:17: warning: the import knows no module \"OTHER_MODULE\", and leaves it "
                       "out"));
}

TEST(LegacyCheck, OfWhatCannotBeImportedSaysWhy) {
  const std::pair<std::string, const char*> rows[] = {
      {"<LocalSettings>\n<Module></LocalSettings>", "2:"},
      {"<a/>",
       "1:1: error: the import would take nothing: the first element is \"a\", not "
       "\"LocalSettings\""},
      {"<!-- -->", "1:1: error: the import would take nothing: the first element is \"\", not "},
      {"<a>" + std::string(1024 * 1024, ' ') + "</a>",
       " error: the import would take nothing: the document is larger than 1048576 bytes"},
  };
  for (const auto& [text, line] : rows) {
    EXPECT_FALSE(check(text).usable);
    EXPECT_THAT(linesOf(text), ElementsAre(testing::StartsWith(line)));
  }
}

TEST(LegacyCheck, TellsWhereAZeroByteEndsTheDocument) {
  const std::string text = document(param("PMS_LOG_LEVEL", "1"));
  EXPECT_THAT(
      linesOf(text + std::string("\n\0x", 3)),
      ElementsAre("4:1: error: the document ends at a zero byte; what follows is left out"));
}

// The size of a value is the document's own.
TEST(LegacyCheck, TakesAnyValue) {
  const std::string long_ = "<![CDATA[" + std::string(1'000'000, '&') + "]]>";
  EXPECT_THAT(linesOf(document(param("PMS_LOG_LEVEL", long_))),
              ElementsAre(HasSubstr("the import would take _LL_DISABLED")));
}

}  // namespace
}  // namespace checking
