// What is found in a settings text, where, and what of it is shown.
#include "inspection/inspection.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "tests/agent/state/scratch_directory.h"
#include "tests/support/readable_bytes.h"

namespace inspection {
namespace {

using namespace LPARAMS::Server;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::Not;

using Lines = std::vector<std::string>;

const char* nameOf(Finding::Kind kind) {
  switch (kind) {
    case Finding::UnknownName:
      return "UnknownName";
    case Finding::BlockNotClosed:
      return "BlockNotClosed";
    case Finding::MembersMissing:
      return "MembersMissing";
    case Finding::OtherRoot:
      return "OtherRoot";
    case Finding::NotToItsEnd:
      return "NotToItsEnd";
    case Finding::UnreadableValue:
      return "UnreadableValue";
    case Finding::NoSuchName:
      return "NoSuchName";
    case Finding::ExtraText:
      return "ExtraText";
    case Finding::OtherValue:
      return "OtherValue";
    case Finding::GivenTwice:
      return "GivenTwice";
    case Finding::SecondUser:
      return "SecondUser";
    case Finding::NamelessUser:
      return "NamelessUser";
    case Finding::TooManyUsers:
      return "TooManyUsers";
    case Finding::LineTaken:
      return "LineTaken";
    case Finding::LostBehindEnd:
      return "LostBehindEnd";
    case Finding::ControlCharacters:
      return "ControlCharacters";
    case Finding::LongText:
      return "LongText";
    default:
      return "?";
  }
}

/// "KIND name=value ...", with a "!" in front of what the module's load reports.
std::string describe(const Finding& finding) {
  std::string line = (finding.reported ? "!" : "") + std::string(nameOf(finding.kind));
  for (const auto& [name, value] : fieldsOf(finding)) {
    line += " " + std::string(name) + "=" + testing_support::inQuotes(value);
  }
  return line;
}

Lines findingsIn(const std::string& text) {
  Catalogue settings;
  Lines lines;
  for (const Finding& finding : inspect(text, settings).findings.first) {
    lines.push_back(describe(finding));
  }
  return lines;
}

std::string edited(const std::string& from, const std::string& to) {
  std::string text = agent_testing::exampleSettings();
  return text.replace(text.find(from), from.size(), to);
}

TEST(Inspection, HasWordsForEachKindOfFinding) {
  std::set<std::string> words;
  for (int kind = 0; kind <= Finding::NotReadBack; ++kind) {
    words.emplace(inWords(static_cast<Finding::Kind>(kind)));
  }
  EXPECT_EQ(words.size(), Finding::NotReadBack + 1U) << "each has its own";
  EXPECT_FALSE(words.contains("?"));
}

TEST(Inspection, FindsNothingInAFileAsItIsSaved) {
  EXPECT_THAT(findingsIn(agent_testing::exampleSettings()), ElementsAreArray(Lines{}));
  EXPECT_THAT(findingsIn("\xEF\xBB\xBF" + agent_testing::exampleSettings()),
              ElementsAreArray(Lines{}));
}

TEST(Inspection, HasTheValuesThatALoadTakes) {
  Catalogue settings;
  const Inspection inspection = inspect(agent_testing::exampleSettings(501), settings);
  EXPECT_TRUE(inspection.loaded);
  EXPECT_EQ(inspection.incomplete, "");
  EXPECT_EQ(settings.IKE->IKE_PORT.value, 501);
  ASSERT_EQ(settings.USERS->items.size(), 2u);
  EXPECT_EQ(settings.USERS->items[1]->NAME.value, "bob");
}

struct Row {
  std::string from;
  std::string to;
  Lines findings;  // with {PIECE} for the number of the first line that holds the piece
};

std::string lineWith(const std::string& piece, const std::string& text) {
  const auto at = text.begin() + static_cast<std::ptrdiff_t>(text.find(piece));
  return std::to_string(1 + std::count(text.begin(), at, '\n'));
}

Lines withNumbers(Lines findings, const std::string& text) {
  for (std::string& finding : findings) {
    for (size_t open; (open = finding.find('{')) != std::string::npos;) {
      const size_t size = finding.find('}') - open + 1;
      finding.replace(open, size, lineWith(finding.substr(open + 1, size - 2), text));
    }
  }
  return findings;
}

void expectFindings(const std::vector<Row>& rows) {
  for (const Row& row : rows) {
    const std::string text = edited(row.from, row.to);
    EXPECT_THAT(findingsIn(text), ElementsAreArray(withNumbers(row.findings, text))) << row.to;
  }
}

TEST(Inspection, TellsWhatTheLoadReportsWithPlaceAndText) {
  const std::string port = R"( expected="a whole number from 1 to 65535" value="500")";
  expectFindings({
      {"IKE_PORT=500",
       "IKE_PORT=70000",
       {R"(!UnreadableValue line="5" column="18" parameter="IKE.IKE_PORT" text="70000")" + port}},
      {"IKE_PORT=500",
       "IKE_PORT=abc",
       {R"(!UnreadableValue line="5" column="18" parameter="IKE.IKE_PORT" text="abc")" + port}},
      {"EXCHANGE_TIMEOUT=90",
       "EXCHANGE_TIMEOUT=90 seconds",
       {R"(!ExtraText line="7" column="26" parameter="IKE.EXCHANGE_TIMEOUT" text="90 seconds" )"
        R"(expected="a whole number from 5 to 600" value="90")"}},
      {"LANGUAGE=LOG_LANG_ENG",
       "LANGUAGE=English",
       {R"(!NoSuchName line="{LANGUAGE=}" column="18" parameter="LOG.LANGUAGE" text="English" )"
        R"(expected="one of LOG_LANG_ENG, LOG_LANG_RUS" value="LOG_LANG_ENG")"}},
      {"NATT_PORT=",
       "Natt_Port=",
       {R"(!UnknownName line="6" column="9" parameter="IKE.Natt_Port" similar="NATT_PORT")",
        R"(!MembersMissing line="2" column="6" parameter="IKE" missing="NATT_PORT")"}},
      {"    /LOG=\n",
       "    /OTHER=\nAA=1\n/BB=\nCC=1\nend=\nend=\n    /LOG=\n",
       {R"(!UnknownName line="{/OTHER=}" column="6" parameter="OTHER")",
        R"(!UnknownName line="{AA=1}" column="1" parameter="OTHER.AA")",
        R"(!UnknownName line="{/BB=}" column="2" parameter="OTHER.BB")",
        R"(!UnknownName line="{CC=1}" column="1" parameter="BB.CC")"}},
      {"    /USERS=\n",
       "    /USERS=\nDD=1\n",
       {R"(!UnknownName line="{DD=1}" column="1" parameter="USERS.DD")"}},
      {"/ROOT=",
       "/TREE=",
       {R"(!OtherRoot line="1" column="1" text="TREE" expected="/ROOT=")", "!NotToItsEnd"}},
      {"    end=\nend=\n",
       "",
       {R"(!BlockNotClosed line="{/USERS=}" column="6" parameter="USERS")", "!NotToItsEnd"}},
  });
}

TEST(Inspection, TellsWhatTheLoadChangesInSilence) {
  expectFindings({
      {"EXCHANGE_TIMEOUT=90",
       "EXCHANGE_TIMEOUT=700",
       {R"(OtherValue line="7" column="26" parameter="IKE.EXCHANGE_TIMEOUT" text="700" )"
        R"(expected="a whole number from 5 to 600" value="600")"}},
      {"IKE_PORT=500",
       "IKE_PORT=-1",
       {R"(OtherValue line="5" column="18" parameter="IKE.IKE_PORT" text="-1" )"
        R"(expected="a whole number from 1 to 65535" value="65535")"}},
      {"IKE_PORT=500", "IKE_PORT= +0500", {}},  // another spelling
      {"LOG_LEVEL=_LL_DETAILS", "LOG_LEVEL=_ll_details", {}},
      {"LOG_LEVEL=_LL_DETAILS",
       "LOG_LEVEL=_LL_EVENTS|_LL_DETAILS",
       {R"(OtherValue line="{LOG_LEVEL=}" column="19" parameter="LOG.LOG_LEVEL" )"
        R"(text="_LL_EVENTS|_LL_DETAILS" expected="one of _LL_DISABLED, _LL_EVENTS, _LL_DETAILS, )"
        R"(_LL_VERBOSE" value="_LL_EVENTS")"}},
      {"NATT_PORT=4500",
       "IKE_PORT=501",
       {R"(GivenTwice line="6" column="9" parameter="IKE.IKE_PORT" other-line="5")",
        R"(MembersMissing line="2" column="6" parameter="IKE" missing="NATT_PORT")"}},
      {"    /LOG=\n",
       "    /IKE= \n    end=\n    /LOG=\n",
       {R"(GivenTwice line="{/IKE= }" column="6" parameter="IKE" other-line="2")",
        R"(!MembersMissing line="{/IKE= }" column="6" parameter="IKE" missing="IKE1_STATUS, IKE2_STATUS, )"
        "IKE_PORT, NATT_PORT, EXCHANGE_TIMEOUT, SHORT_EXCHANGE_TIMEOUT, MAX_HALFOPEN, "
        R"(WNDSIZE_INITIATOR, WNDSIZE_RESPONDER, SERVERS_POLICY, ...")"}},
      {"/USER=\n            NAME=bob",
       "/USER=NAME=alice",
       {R"(SecondUser line="{/USER=NAME=}" column="15" parameter="USERS[alice]" )"
        R"(other-line="{NAME=alice}")"}},
      {"/USER=\n            NAME=bob",
       "/USER=NAME=",
       {R"(NamelessUser line="{/USER=NAME=}" column="15" parameter="USERS[1]")"}},
      {"PSK_NAME=\n",
       "PSK_NAME=a\tb\n",
       {R"(ControlCharacters line="{PSK_NAME=a}" column="18" parameter="POLICY.PSK_NAME" text="a\tb")"}},
      {"    end=\n    /LOG=",
       "    end=x    /LOG=",
       {R"(LostBehindEnd line="{end=x}" column="9" parameter="IKE")"}},
  });
}

TEST(Inspection, TellsLinesThatBecameAPartOfAnother) {
  const std::string missing = R"(!MembersMissing line="2" column="6" parameter="IKE" missing=)";
  expectFindings({
      {"        IKE_PORT=500",
       "# the port\n        IKE_PORT=500",
       {R"x(!UnknownName line="5" column="1" parameter="IKE.(27 bytes, not shown)" other-line="6")x",
        R"(LineTaken line="6" column="9" parameter="IKE.IKE_PORT" other-line="5")",
        missing + R"("IKE_PORT")"}},
      {"IKE_PORT=500",
       "IKE_PORT 500",
       {R"x(!UnknownName line="5" column="9" parameter="IKE.(30 bytes, not shown)" other-line="6")x",
        R"(LineTaken line="6" column="9" parameter="IKE.NATT_PORT" other-line="5")",
        missing + R"("IKE_PORT, NATT_PORT")"}},
      {"IKE_PORT=500",
       "IKE_PORT=",
       {R"(!UnreadableValue line="5" column="18" parameter="IKE.IKE_PORT" text="" )"
        R"(expected="a whole number from 1 to 65535" value="500")",
        R"(LineTaken line="6" column="9" parameter="IKE.NATT_PORT" other-line="5")",
        missing + R"("NATT_PORT")"}},
      {"IKE_PORT=500",
       "IKE_PORT=\n\n  501",
       {R"(LineTaken line="7" column="3" parameter="IKE" other-line="5")"}},
  });
}

TEST(Inspection, FindingsInUsersHaveTheirNames) {
  const std::string expected = R"( expected="a whole number from 5 to 4294967295" value="10")";
  expectFindings({
      {"PMP_TIMEOUT=10",
       "PMP_TIMEOUT=x",
       {R"(!UnreadableValue line="{PMP_TIMEOUT=x}" column="25" parameter="USERS[bob].PMP_TIMEOUT" text="x")" +
        expected}},
      {"/USER=\n            NAME=alice\n",
       "/USER=NAME=\nFOO=1\n",
       {R"(!UnknownName line="{FOO=1}" column="1" parameter="USERS[0].FOO")",
        R"(NamelessUser line="{/USER=NAME=}" column="15" parameter="USERS[0]")"}},
      {"            NAME=bob\n",
       "            FOO=1\n            NAME=b b\n",
       {R"(!UnknownName line="{FOO=1}" column="13" parameter="USERS[b b].FOO")"}},
  });
}

// Somebody who edits a file may put anything between the name of a secret and its value, or have
// the value go on in the next line, whose beginning is then taken for a name.
TEST(Inspection, ShowsNoSecret) {
  const std::string line = "QCD_SECRET=example secret, change it\n";
  const std::pair<std::string, std::string> edits[] = {
      {line, "QCD_SECRET topsecret\n"},
      {line, "QCD_SECRET: topsecret\n"},
      {line, "QCD_SECRETtopsecret=\n"},
      {line, "QCD_SECRET=a\ttopsecret\n"},
      {line, "QCD_SECRET=a\ntopsecret\n"},
      {line, "QCD_SECRET=a\ntopsecret=\n"},
      {line, "QCD_SECRET=a\nTOPSECRET=\nTOPSECRET=="},
      {line, "/QCD_SECRETS=topsecret\n"},
      {line, "topsecret=a\n"},
      {line, "IPSEC_LIFETIME_JITTER=1 QCD_SECRET:topsecret\n"},
      {"IPSEC_LIFETIME_JITTER=1\n        " + line,
       "IPSEC_LIFETIME_JITTER=\n        QCD_SECRET=topsecret\n"},
      {"IPSEC_LIFETIME_JITTER=1\n        " + line, "IPSEC_LIFETIME_JITTER=x QCD_SECRET topsecret"},
      {"IPSEC_LIFETIME_JITTER=1\n        " + line, "IPSEC_LIFETIME_JITTER=1 DPD=topsecret"},
      {"/ROOT=", "/ROO\nQCD_SECRET:topsecret="},
  };
  for (const auto& [from, to] : edits) {
    const Lines lines = findingsIn(edited(from, to));
    EXPECT_FALSE(lines.empty()) << to;
    for (const std::string& text : lines) {
      EXPECT_THAT(text, Not(HasSubstr("topsecret"))) << to;
      EXPECT_THAT(text, Not(HasSubstr("TOPSECRET"))) << to;
    }
  }
}

TEST(Inspection, TellsTheFirstUserThatIsOneTooMany) {
  Catalogue settings;
  const std::string text = agent_testing::exampleSettings();
  EXPECT_EQ(inspect(text, settings, {.users = 2}).findings.count, 0u);
  Catalogue again;
  const Inspection inspection = inspect(text, again, {.users = 1});
  ASSERT_EQ(inspection.findings.count, 1u);
  EXPECT_EQ(describe(inspection.findings.first[0]),
            "TooManyUsers line=\"" + std::to_string(std::stoi(lineWith("NAME=bob", text)) - 1) +
                R"(" column="10" parameter="USERS[bob]" expected="at most 1")");
  Catalogue noneAllowed;
  EXPECT_EQ(inspect(text, noneAllowed, {.users = 0}).findings.count, 1u);
}

TEST(Inspection, TellsWhichNameMayHaveBeenMeant) {
  expectFindings({
      {"    /LOG=\n",
       "    /LOGS=\n    end=\n    /LOG=\n",
       {R"(!UnknownName line="{/LOGS=}" column="6" parameter="LOGS" similar="LOG")"}},
      {"LANGUAGE=LOG_LANG_ENG",
       "LANGUAGE=LOG_LANG_EN",
       {R"(!NoSuchName line="{LANGUAGE=}" column="18" parameter="LOG.LANGUAGE" text="LOG_LANG_EN" )"
        R"(expected="one of LOG_LANG_ENG, LOG_LANG_RUS" value="LOG_LANG_ENG" )"
        R"(similar="LOG_LANG_ENG")"}},
  });
}

TEST(Inspection, KeepsAsManyAsAreAskedFor) {
  Catalogue settings;
  const Inspection inspection = inspect("/ROOT=\nA=\nB=\nC=\nend=\n", settings, {.findings = 2});
  EXPECT_EQ(inspection.findings.first.size(), 2u);
  EXPECT_EQ(inspection.findings.count, 4u);
}

TEST(Inspection, CountsWhatItDoesNotKeep) {
  std::string text = "/ROOT=\n";
  constexpr size_t COUNT = 50'000;
  for (size_t i = 0; i < COUNT; ++i) text += "A=\n";
  Catalogue settings;
  const Inspection inspection = inspect(text + "end=\n", settings);
  EXPECT_EQ(inspection.findings.count, COUNT + 1);  // the groups are missing
  EXPECT_EQ(inspection.findings.reported, COUNT + 1);
  EXPECT_EQ(inspection.findings.first.size(), 100u);
}

TEST(Inspection, KeepsOnlyThePartOfALongTextThatCanBeShown) {
  Catalogue settings;
  const Inspection inspection =
      inspect(edited("PSK_NAME=\n", "PSK_NAME=" + std::string(65'537, 'x') + "\n"), settings);
  ASSERT_EQ(inspection.findings.count, 1u);
  EXPECT_EQ(inspection.findings.first[0].kind, Finding::LongText);
  EXPECT_EQ(inspection.findings.first[0].given, std::string(200, 'x') + "...");
}

TEST(Inspection, OfWhatAModuleWouldReadForEver) {
  for (const std::string text : {"", "=", "====", "\xEF\xBB\xBF", "\xEF\xBB\xBF=="}) {
    Catalogue settings;
    const Inspection inspection = inspect(text, settings);
    EXPECT_FALSE(inspection.loaded);
    EXPECT_NE(inspection.incomplete, "");
  }
}

}  // namespace
}  // namespace inspection
