// The words for what a load could not take: one line for each report.
#include "agent/load_report.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

namespace agent {
namespace {

using LPARAMS::Server::Server_t;

class LoadReportTest : public testing::Test {
 protected:
  /// What the report writes to the log, without the head that every line has.
  std::string line(const std::function<void(LoadReport&)>& action) {
    CaptureStderr();
    action(report);
    const std::string text = GetCapturedStderr();
    const std::string head = "lparams_agent: warning: ";
    EXPECT_TRUE(text.starts_with(head)) << text;
    EXPECT_EQ(text.find('\n'), text.size() - 1) << text;
    return text.substr(head.size(), text.size() - head.size() - 1);
  }

  std::string badValue(const std::string& param, const std::string& text) {
    return line([&](LoadReport& r) { r.badValue(param, text); });
  }

  Server_t server;
  LoadReport report{server};
};

TEST_F(LoadReportTest, UnknownParameterOrBlock) {
  EXPECT_EQ(line([](LoadReport& r) { r.unknownParam("IKE_SPEED", "IKE"); }),
            "the group has no such parameter or block; its value was ignored "
            "group=IKE parameter=IKE_SPEED");
  EXPECT_EQ(line([](LoadReport& r) { r.unknownParam("Ike_Port ", "IKE"); }),
            "the group has no such parameter or block; its value was ignored "
            "group=IKE parameter=\"Ike_Port \"");
  EXPECT_EQ(line([](LoadReport& r) { r.unknownParam("no comment\n  IKE_PORT", "IKE"); }),
            "the group has no such parameter or block; its value was ignored "
            "group=IKE parameter=\"(no name: 21 bytes, not shown)\"");
  EXPECT_EQ(line([](LoadReport& r) { r.unknownParam("", "a\x1B[2J"); }),
            "the group has no such parameter or block; its value was ignored "
            "group=\"(no name: 5 bytes, not shown)\" parameter=\"\"");
}

TEST_F(LoadReportTest, BlockThatDoesNotEnd) {
  EXPECT_EQ(line([](LoadReport& r) { r.paramFailed("LOG", "ROOT"); }),
            "the block is not closed before the end of the file; what was read of it is kept "
            "group=ROOT block=LOG");
}

TEST_F(LoadReportTest, MissingMembers) {
  EXPECT_EQ(line([](LoadReport& r) { r.paramsMissing(2, 14, "LOG"); }),
            "the group has fewer members in the file than it should; those missing keep their "
            "values group=LOG missing=2 of=14");
}

TEST_F(LoadReportTest, FileOfAnotherKind) {
  EXPECT_EQ(line([](LoadReport& r) { r.rootMismatch(" /ROOT", "ROOT"); }),
            "the file does not begin with the root block; nothing was loaded "
            R"(found=" /ROOT" expected="/ROOT=")");
}

TEST_F(LoadReportTest, FileThatWasNotReadToItsEnd) {
  EXPECT_EQ(line([](LoadReport& r) { r.fileFailed("/var/lib/x/localsettings.ini"); }),
            "the file could not be loaded to its end; what was read is kept "
            "file=/var/lib/x/localsettings.ini");
}

TEST_F(LoadReportTest, BadValueOfEachKindOfParameter) {
  const std::string kept = "the value cannot be read; the parameter kept its value ";
  EXPECT_EQ(badValue("IKE_PORT", "abc"),
            kept +
                "group=IKE parameter=IKE_PORT text=abc "
                R"(expected="a whole number from 1 to 65535" value=500)");
  EXPECT_EQ(badValue("EXCHANGE_TIMEOUT", ""),
            kept + R"(group=IKE parameter=EXCHANGE_TIMEOUT text="" )"
                   R"(expected="a whole number from 5 to 600" value=60)");
  EXPECT_EQ(badValue("FILELOG_ON", "on\r"),
            kept + R"(group=LOG parameter=FILELOG_ON text="on\x0d" expected="0 or 1" value=1)");
  EXPECT_EQ(badValue("DDP_LOGLEVEL", "loud"),
            "the value has no such name; the parameter took its default "
            "group=POLICY parameter=DDP_LOGLEVEL text=loud "
            R"(expected="one of _LL_DISABLED, _LL_EVENTS, _LL_DETAILS, _LL_VERBOSE" )"
            "value=_LL_DISABLED");
}

TEST_F(LoadReportTest, BadValueShowsTheValueThatTheParameterHasNow) {
  server.IKE->IKE_PORT.value = 501;
  EXPECT_TRUE(badValue("IKE_PORT", "abc").ends_with(" value=501"));
}

TEST_F(LoadReportTest, NameThatStandsInSeveralGroups) {
  EXPECT_EQ(badValue("PMP_TIMEOUT", "soon"),
            "the value cannot be read; the parameter kept its value "
            "group=POLICY parameter=PMP_TIMEOUT text=soon "
            R"(expected="a whole number from 5 to 4294967295" value=10)")
      << "no entry is there that it could be in";
  (void)LPARAMS::Server::listAdd(*server.USERS);
  EXPECT_EQ(badValue("PMP_TIMEOUT", "soon"),
            "the value cannot be read; the parameter kept its value "
            R"(group="POLICY or USER" parameter=PMP_TIMEOUT text=soon )"
            R"(expected="a whole number from 5 to 4294967295")");
}

TEST_F(LoadReportTest, BadValueOfAParameterThatTheAgentDoesNotKnow) {
  EXPECT_EQ(badValue("NEW_ONE", "x y"), R"(the value cannot be read parameter=NEW_ONE text="x y")");
}

TEST_F(LoadReportTest, ExtraText) {
  EXPECT_EQ(line([](LoadReport& r) { r.extraText("EXCHANGE_TIMEOUT", " seconds"); }),
            "the value is followed by more text, which was ignored "
            R"(group=IKE parameter=EXCHANGE_TIMEOUT text=" seconds")");
}

// Somebody who edits a file may put anything between the name of a secret and its value, or have
// the value go on in the next line, whose beginning is then taken for a name.
TEST_F(LoadReportTest, WhatMayBeASecretIsNotShown) {
  for (const char* key : {"QCD_SECRET topsecret\n    DPD_ENABLED", "QCD_SECRET: topsecret",
                          "topsecret\n    DPD_ENABLED", "topsecret", "QCD_SECRETtopsecret"}) {
    const std::string text = line([&](LoadReport& r) { r.unknownParam(key, key); }) +
                             line([&](LoadReport& r) { r.paramFailed(key, key); });
    EXPECT_EQ(text.find("topsecret"), std::string::npos) << text;
  }
  for (const char* rest : {"QCD_SECRET topsecret", "QCD_SECRET:topsecret", " QCD_SECRET=topsecret",
                           "DPD=topsecret", "x QCD_SECRET = topsecret"}) {
    const std::string text = badValue("IPSEC_LIFETIME_JITTER", rest) +
                             line([&](LoadReport& r) { r.extraText("IKE_PORT", rest); });
    EXPECT_EQ(text.find("topsecret"), std::string::npos) << text;
    EXPECT_NE(text.find("(hidden)"), std::string::npos) << text;
  }
}

TEST_F(LoadReportTest, CountsWhatItHasReported) {
  EXPECT_EQ(report.reports(), 0);
  (void)badValue("IKE_PORT", "abc");
  (void)line([](LoadReport& r) { r.paramFailed("LOG", "ROOT"); });
  EXPECT_EQ(report.reports(), 2);
}

}  // namespace
}  // namespace agent
