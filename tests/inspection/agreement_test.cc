// The inspection says what the module does: on thousands of spoilt texts it has the same reports,
// in the same order, and the same values.
#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "inspection/inspection.h"
#include "lparams/server.h"
#include "tests/agent/state/scratch_directory.h"
#include "tests/support/fake_platform.h"

namespace inspection {
namespace {

using namespace LPARAMS::Server;
using namespace std::string_literals;

// More would take a minute with a sanitizer. Nothing runs side by side.
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr int TEXTS = 400;
#else
constexpr int TEXTS = 3000;
#endif

/// One report: what it is about, and the bytes in front of and at its place.
struct Report {
  std::string what;
  std::string before;  ///< what stands there, up to the place
  std::string at;      ///< what stands there, from the place on
};

class Reports : public LoadLog {
 public:
  void unknownParam(const std::string& key, const std::string& /*group*/) override {
    all.push_back({"unknown", "", key});
  }
  void paramFailed(const std::string& key, const std::string& /*group*/) override {
    all.push_back({"not closed " + key, "", key});
  }
  void paramsMissing(int /*missing*/, int /*total*/, const std::string& group) override {
    all.push_back({"missing in " + group, "", group == "ROOT" ? "" : group});
  }
  void rootMismatch(const std::string& /*key*/, const std::string& /*rootName*/) override {
    all.push_back({"other root", "", ""});
  }
  void fileFailed(const std::string& /*fileName*/) override {
    all.push_back({"not to its end", "", ""});
  }
  void badValue(const std::string& param, const std::string& /*text*/) override {
    all.push_back({"bad " + param, param + "=", ""});
  }
  void extraText(const std::string& param, const std::string& /*text*/) override {
    all.push_back({"extra " + param, param + "=", ""});
  }

  std::vector<Report> all;
};

/// As the load would report it.
std::string reportOf(const Finding& finding) {
  const std::string& path = finding.path;
  const std::string last = path.substr(path.rfind('.') + 1);
  const bool isUser = path.starts_with("USERS[");
  switch (finding.kind) {
    case Finding::UnknownName:
      return "unknown";
    case Finding::BlockNotClosed:
      return "not closed " + (path == "USERS.USER" ? "USER" : last);
    case Finding::MembersMissing:
      return "missing in " + (path.empty() ? "ROOT" : isUser ? "USER" : path);
    case Finding::OtherRoot:
      return "other root";
    case Finding::NotToItsEnd:
      return "not to its end";
    case Finding::UnreadableValue:
    case Finding::NoSuchName:
      return "bad " + last;
    case Finding::ExtraText:
      return "extra " + last;
    default:
      return "?";
  }
}

size_t offsetOf(const std::string& text, Place place) {
  size_t begin = 0;
  for (size_t line = 1; line < place.line; ++line) begin = text.find('\n', begin) + 1;
  return begin + place.column - 1;
}

/// Spoils a text as editors, disks and people do, in the same way at each run.
class Spoiler {
 public:
  std::string spoil(std::string text) {
    for (size_t times = 1 + below(4); times > 0 && !text.empty(); --times) change(text);
    return text;
  }

 private:
  size_t below(size_t limit) { return random_() % limit; }

  const std::string& anyOf(const std::vector<std::string>& pieces) {
    return pieces[below(pieces.size())];
  }

  size_t anyLine(const std::string& text) {
    const size_t end = text.rfind('\n', below(text.size()));
    return end == std::string::npos ? 0 : end + 1;
  }

  static size_t lineSize(const std::string& text, size_t begin) {
    const size_t end = text.find('\n', begin);
    return (end == std::string::npos ? text.size() : end + 1) - begin;
  }

  void change(std::string& text) {
    const size_t at = below(text.size());
    const size_t line = anyLine(text);
    const size_t mark = std::min(text.find('=', line), text.size());
    switch (below(10)) {
      case 0:
        text[at] = static_cast<char>(text[at] ^ (1 << below(8)));
        break;
      case 1:
        text.erase(at, 1 + below(3));
        break;
      case 2:
        text.insert(at, anyOf({"=", "\n", "/", " ", "\t", "\r", "\0"s, "|", "end=", "end", "\n="}));
        break;
      case 3:
        text.erase(line, lineSize(text, line));
        break;
      case 4:
        text.insert(anyLine(text), text.substr(line, lineSize(text, line)));
        break;
      case 5:
        if (mark == text.size()) break;
        text.replace(mark + 1, lineSize(text, mark) - 1,
                     anyOf({"", "70000", "-1", "+7", "0", "00012", "4294967296", "99999999999999",
                            "7 seconds", "true", "2", "_LL_EVENTS|_LL_DETAILS", "PMPAUTH_PSK|",
                            "a\tb", "1\r", "x=y", "same", " 7", "\n9"}) +
                         "\n");
        break;
      case 6:
        text.erase(mark, 1);
        break;
      case 7:
        text.insert(line,
                    anyOf({"# a comment\n", "\n\n", "FOO=1\n", "/FOO=\nA=1\n/B=\nend=\nend=\n",
                           "end=\n", "/IKE=\n", "/USER=\nNAME=same\nend=\n", "end=x", "/USERS=\n",
                           "ike_port=7\n", "IKE_PORT 7\n", "==\n"}));
        break;
      case 8:
        if (below(8) == 0) text.resize(at);
        break;
      default:
        if (below(8) == 0) text.insert(0, anyOf({"\xEF\xBB\xBF", "=", "\n", "/ROOT="}));
        break;
    }
  }

  std::mt19937 random_{20261122};
};

std::string textOf(ParamGroup& settings) {
  std::ostringstream text;
  (void)settings.save(text, 0);
  return text.str();
}

TEST(Inspection, AgreesWithTheModuleOnThousandsOfSpoiltTexts) {
  const agent_testing::ScratchDirectory directory;
  testing_support::fakePlatform().varDir = directory.path + "/";
  const std::string whole = agent_testing::exampleSettings();
  Spoiler spoiler;
  int reports = 0;
  int silent = 0;
  for (int i = 0; i < TEXTS; ++i) {
    const std::string text = i == 0 ? whole : spoiler.spoil(whole);
    SCOPED_TRACE(i);
    Catalogue inspected;
    const Inspection inspection = inspect(text, inspected);
    // The module would read such a text for ever.
    if (text.find_first_not_of("=\xEF\xBB\xBF") == std::string::npos) continue;

    directory.write("localsettings.ini", text);
    Server_t module;
    Reports expected;
    ASSERT_EQ(module.load(&expected), inspection.loaded);
    ASSERT_EQ(textOf(module), textOf(inspected));

    const Findings& found = inspection.findings;
    ASSERT_EQ(found.reported, expected.all.size());
    if (found.count > Findings::KEPT) continue;
    auto report = expected.all.begin();
    for (const Finding& finding : found.first) {
      if (!finding.reported) {
        ++silent;
        continue;
      }
      ++reports;
      ASSERT_EQ(reportOf(finding), report->what);
      const size_t offset = offsetOf(text, finding.place);
      if (finding.place.line != 0) {
        ASSERT_LE(offset, text.size());
        ASSERT_EQ(text.substr(offset, report->at.size()), report->at) << report->what;
        const std::string before = text.substr(0, offset);
        ASSERT_TRUE(before.ends_with(report->before) ||
                    (offset == text.size() && (before + "=").ends_with(report->before)))
            << report->what;
      }
      ++report;
    }
  }
  EXPECT_GT(reports, TEXTS);
  EXPECT_GT(silent, TEXTS / 4);
}

}  // namespace
}  // namespace inspection
