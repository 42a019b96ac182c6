// The check says what the module does: on ten thousand spoilt files it has the same reports, in the
// same order, and the same values, and it refuses none that the module loads.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iostream>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "checking/forms.h"
#include "inspection/inspector.h"
#include "inspection/settings_completeness.h"
#include "lparams/server.h"
#include "tests/agent/state/scratch_directory.h"
#include "tests/support/fake_platform.h"
#include "tests/support/recording_load_log.h"

namespace checking {
namespace {

using namespace LPARAMS::Server;
using namespace std::string_literals;
using inspection::Finding;
using inspection::Findings;
using inspection::Remark;

// More would take minutes with a sanitizer.
#if defined(__SANITIZE_THREAD__)
constexpr int TEXTS = 100;
#elif defined(__SANITIZE_ADDRESS__)
constexpr int TEXTS = 500;
#else
constexpr int TEXTS = 10'000;
#endif

const std::string SECRET = "example secret";

/// Keeps what the inspector is told.
class Overheard final : public testing_support::RecordingLoadLog {
 public:
  explicit Overheard(LoadLog& inspector) : inspector_(inspector) { g_loadlog = this; }
  ~Overheard() override { g_loadlog = nullptr; }

  void unknownParam(const std::string& key, const std::string& group) override {
    RecordingLoadLog::unknownParam(key, group);
    inspector_.unknownParam(key, group);
  }
  void paramFailed(const std::string& key, const std::string& group) override {
    RecordingLoadLog::paramFailed(key, group);
    inspector_.paramFailed(key, group);
  }
  void paramsMissing(int missing, int total, const std::string& group) override {
    RecordingLoadLog::paramsMissing(missing, total, group);
    inspector_.paramsMissing(missing, total, group);
  }
  void badValue(const std::string& param, const std::string& text) override {
    RecordingLoadLog::badValue(param, text);
    inspector_.badValue(param, text);
  }
  void extraText(const std::string& param, const std::string& text) override {
    RecordingLoadLog::extraText(param, text);
    inspector_.extraText(param, text);
  }

 private:
  LoadLog& inspector_;
};

/// Which of the module's reports the finding is: the name of the report, and what it is about.
std::string reportOf(const Finding& finding) {
  const std::string& path = finding.path;
  const std::string last = path.substr(path.rfind('.') + 1);
  const bool isUser = path.starts_with("USERS[");
  switch (finding.kind) {
    case Finding::UnknownName:
      return "unknownParam(";
    case Finding::BlockNotClosed:
      return "paramFailed(\"" + last + "\", ";
    case Finding::MembersMissing:
      return ", " + (path.empty() ? "ROOT" : isUser ? "USER" : path) + ")";
    case Finding::OtherRoot:
      return "rootMismatch(";
    case Finding::NotToItsEnd:
      return "fileFailed(";
    case Finding::UnreadableValue:
    case Finding::NoSuchName:
      return "badValue(" + last + ", ";
    case Finding::ExtraText:
      return "extraText(" + last + ", ";
    default:
      return "?";
  }
}

/// Spoils a text as editors, disks and people do, in the same way at each run.
class Spoiler {
 public:
  std::string spoil(std::string text) {
    for (size_t times = 1 + below(4); times > 0 && !text.empty(); --times) change(text);
    return text;
  }

  static constexpr size_t KINDS = 14;
  std::array<int, KINDS> used{};  ///< how often each kind was

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

  /// Kinds of which one is enough are drawn less often.
  size_t anyKind() {
    const size_t kind = below(KINDS);
    const bool isRare = kind == Cut || kind == Begin;
    return isRare && below(6) != 0 ? size_t{Flip} : kind;
  }

  enum Kind {
    Flip,
    Erase,
    Insert,
    DropLine,
    DoubleLine,
    SwapLines,
    JoinLines,
    SplitLine,
    Boundary,
    OtherValue,
    DropMark,
    InsertLine,
    Cut,
    Begin,
  };

  void change(std::string& text) {
    static const std::vector<std::string> boundaries = {"",
                                                        "0",
                                                        "1",
                                                        "-1",
                                                        "2",
                                                        "3",
                                                        "4",
                                                        "5",
                                                        "60",
                                                        "61",
                                                        "255",
                                                        "256",
                                                        "600",
                                                        "601",
                                                        "65535",
                                                        "65536",
                                                        "70000",
                                                        "86400",
                                                        "86401",
                                                        "2147483647",
                                                        "2147483648",
                                                        "4294967295",
                                                        "+7",
                                                        "4294967296",
                                                        "-4294967295",
                                                        "00012",
                                                        "99999999999999999999999"};
    static const std::vector<std::string> values = {
        "7 seconds",    "true",   "_LL_EVENTS|_LL_DETAILS",
        "PMPAUTH_PSK|", "a\tb",   "1\r",
        "x=y",          "same",   " 7",
        "\n9",          "0x10",   "1e3",
        "1.5",          "8*32|0", "_ll_details"};
    const size_t at = below(text.size());
    const size_t line = anyLine(text);
    const size_t size = lineSize(text, line);
    const size_t mark = std::min(text.find('=', line), text.size());
    const size_t kind = anyKind();
    ++used[kind];
    switch (kind) {
      case Flip:
        text[at] = static_cast<char>(text[at] ^ (1 << below(8)));
        break;
      case Erase:
        text.erase(at, 1 + below(3));
        break;
      case Insert:
        text.insert(at, anyOf({"=", "\n", "/", " ", "\t", "\r", "\0"s, "|", "end=", "end", "\n="}));
        break;
      case DropLine:
        text.erase(line, size);
        break;
      case DoubleLine:
        text.insert(anyLine(text), text.substr(line, size));
        break;
      case SwapLines: {
        const std::string moved = text.substr(line, size);
        text.erase(line, size);
        text.insert(text.empty() ? 0 : anyLine(text), moved);
        break;
      }
      case JoinLines:
        text.erase(line + size - 1, 1);
        break;
      case SplitLine:
        text.insert(at, "\n");
        break;
      case Boundary:
      case OtherValue:
        if (mark == text.size()) break;
        text.replace(mark + 1, lineSize(text, mark) - 1,
                     anyOf(kind == Boundary ? boundaries : values) + "\n");
        break;
      case DropMark:
        text.erase(mark, 1);
        break;
      case InsertLine:
        text.insert(line,
                    anyOf({"# a comment\n", "\n\n", "FOO=1\n", "/FOO=\nA=1\n/B=\nend=\nend=\n",
                           "end=\n", "/IKE=\n", "/USER=\nNAME=same\nend=\n", "end=x", "/USERS=\n",
                           "ike_port=7\n", "IKE_PORT 7\n", "==\n", "/USER=\nNAME=\nend=\n"}));
        break;
      case Cut:
        text.resize(at);
        break;
      default:
        text.insert(0, anyOf({"\xEF\xBB\xBF", "=", "\n", "/ROOT="}));
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

std::vector<std::string> originals() {
  const std::string example = agent_testing::exampleSettings();
  std::string windows;
  for (const char c : example) windows += c == '\n' ? "\r\n" : std::string(1, c);
  const size_t user = example.find("        /USER=");
  const size_t end = example.rfind("    end=\nend=");
  std::string many = example;
  for (int i = 0; i < 3; ++i) many.insert(end, example.substr(user, end - user));
  Catalogue defaults;
  const std::string saved = textOf(defaults);
  // Each line of the last has two remarks: it takes as long as the others together.
  return {example, saved,   many,    example, saved, example, "\xEF\xBB\xBF" + example,
          saved,   example, example, many,    saved, saved,   example,
          example, windows};
}

class Agreement : public testing::Test {
 protected:
  Agreement() { testing_support::fakePlatform().varDir = directory_.path + "/"; }

  /// What the module reports of the file.
  bool load(const std::string& text, Server_t& module) {
    directory_.write("localsettings.ini", text);
    log_.reports.clear();
    return module.load(&log_);
  }

  void expectSameReports(const std::string& text) {
    Catalogue settings;
    Findings findings{.kept = Checked::KEPT};
    inspection::Inspector inspector(text, settings, MAX_USERS, findings, nullptr);
    const Overheard overheard(inspector);
    (void)inspector.load();
    // The root and the file as a whole are reported to the inspector itself.
    std::vector<std::string> reports = log_.reports;
    std::erase_if(reports, [](const std::string& report) {
      return report.starts_with("rootMismatch(") || report.starts_with("fileFailed(");
    });
    ASSERT_EQ(overheard.reports, reports);
    auto report = log_.reports.begin();
    for (const Finding& finding : findings.first) {
      if (!finding.reported) continue;
      ASSERT_NE(report, log_.reports.end());
      ASSERT_NE(report->find(reportOf(finding)), std::string::npos) << *report;
      ++report;
    }
    ASSERT_EQ(report, log_.reports.end());
  }

  const agent_testing::ScratchDirectory directory_;
  testing_support::RecordingLoadLog log_;
};

TEST_F(Agreement, WithTheModuleOnTenThousandSpoiltFiles) {
  const std::vector<std::string> whole = originals();
  Spoiler spoiler;
  size_t reports = 0;
  size_t silent = 0;
  int loaded = 0;
  int notByAStart = 0;
  for (int i = 0; i < TEXTS; ++i) {
    const std::string& original = whole[static_cast<size_t>(i) % whole.size()];
    const std::string text =
        static_cast<size_t>(i) < whole.size() ? original : spoiler.spoil(original);
    SCOPED_TRACE(i);
    // The module would read such a text for ever.
    if (text.find_first_not_of("=\xEF\xBB\xBF") == std::string::npos) continue;

    Server_t module;
    const bool isLoaded = load(text, module);
    const Checked checked = checkSettingsFile(text, Checked::KEPT);
    ASSERT_EQ(checked.usable, isLoaded);
    ASSERT_EQ(textOf(*checked.settings), textOf(module));
    ASSERT_EQ(checked.leftOut, 0u);
    const auto reported = std::ranges::count_if(checked.remarks, &Remark::reported);
    ASSERT_EQ(static_cast<size_t>(reported), log_.reports.size());
    ASSERT_NO_FATAL_FAILURE(expectSameReports(text));
    for (const Remark& remark : checked.remarks) {
      ASSERT_EQ(remark.message.find(SECRET), std::string::npos) << remark.message;
      ASSERT_EQ(remark.parameter.find(SECRET), std::string::npos) << remark.parameter;
    }

    loaded += isLoaded ? 1 : 0;
    notByAStart += isLoaded && !inspection::incompleteBecause(text).empty() ? 1 : 0;
    reports += log_.reports.size();
    silent += checked.remarks.size() - log_.reports.size();
  }
  std::cout << TEXTS << " files, " << loaded << " loaded (" << notByAStart
            << " of them would be refused at a start), " << reports << " reports, " << silent
            << " remarks besides: 0 differences\n";
  EXPECT_GT(loaded, TEXTS / 2);
  EXPECT_GT(reports, static_cast<size_t>(TEXTS));
  EXPECT_GT(silent, static_cast<size_t>(TEXTS) / 4);
  for (const int times : spoiler.used) EXPECT_GE(times, TEXTS / 500);
}

}  // namespace
}  // namespace checking
