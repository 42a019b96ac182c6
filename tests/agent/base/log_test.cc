#include "agent/base/log.h"

#include <gmock/gmock.h>

#include <functional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

namespace agent {
namespace {

std::string written(const std::function<void()>& action) {
  CaptureStderr();
  action();
  return GetCapturedStderr();
}

TEST(Quoted, ShowsEveryByteAsPrintableAscii) {
  const struct {
    std::string_view text;
    const char* shown;
  } rows[] = {
      {"", R"("")"},
      {"plain", R"("plain")"},
      {"two words", R"("two words")"},
      {"say \"no\"", R"("say \"no\"")"},
      {"back\\slash", R"("back\\slash")"},
      {"a\nb\tc", R"("a\nb\tc")"},
      {"a\rb", R"("a\x0db")"},
      {{"a\0b", 3}, R"("a\x00b")"},
      {"\x1B[31mred", R"("\x1b[31mred")"},
      {"\x7F\x80\xFF", R"("\x7f\x80\xff")"},
      {"d\xC3\xA9j\xC3\xA0", R"("d\xc3\xa9j\xc3\xa0")"},
      {" ~", R"(" ~")"},
  };
  for (const auto& row : rows) EXPECT_EQ(quoted(row.text), row.shown);
}

TEST(Quoted, ShowsTheFirstTwoHundredBytes) {
  EXPECT_EQ(agent::quoted(std::string(200, 'x')), '"' + std::string(200, 'x') + '"');
  EXPECT_EQ(agent::quoted(std::string(201, 'x')), '"' + std::string(200, 'x') + "...\"");
  EXPECT_EQ(agent::quoted(std::string(1'000'000, 'x')).size(), 205U);
}

TEST(Log, WritesTheLevelAndTheMessage) {
  EXPECT_EQ(written([] { log(Level::Error, "it failed"); }), "lparams_agent: error: it failed\n");
  EXPECT_EQ(written([] { log(Level::Warning, "odd"); }), "lparams_agent: warning: odd\n");
  EXPECT_EQ(written([] { log(Level::Notice, "so"); }), "lparams_agent: notice: so\n");
  EXPECT_EQ(written([] { log(Level::Info, "fine"); }), "lparams_agent: info: fine\n");
}

TEST(Log, WritesFieldsInTheirOrderQuotedWhereNeeded) {
  const struct {
    std::string_view value;
    std::string field;
  } rows[] = {
      {"plain", "plain"},    {"/a/path-1.ini", "/a/path-1.ini"},
      {"", R"("")"},         {"two words", R"("two words")"},
      {"a=b", R"("a=b")"},   {"a\"b", R"("a\"b")"},
      {"a\\b", R"("a\\b")"}, {"line\nend", R"("line\nend")"},
      {"\xFF", R"("\xff")"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(written([&] {
                log(Level::Info, "m", {{"k", row.value}, {"n", -5}});
              }),
              "lparams_agent: info: m k=" + row.field + " n=-5\n");
  }
}

TEST(Log, CutsOffEveryLongValue) {
  EXPECT_EQ(written([] {
              log(Level::Info, "m", {{"k", std::string(200, 'x')}});
            }),
            "lparams_agent: info: m k=" + std::string(200, 'x') + "\n");
  EXPECT_EQ(written([] {
              log(Level::Info, "m", {{"k", std::string(201, 'x')}});
            }),
            "lparams_agent: info: m k=\"" + std::string(200, 'x') + "...\"\n");
}

TEST(Log, KeepsLinesOfSeveralThreadsApart) {
  constexpr int THREADS = 4;
  constexpr int LINES = 200;
  std::istringstream lines(written([] {
    std::vector<std::jthread> threads;
    for (int i = 0; i < THREADS; ++i) {
      threads.emplace_back([] {
        for (int j = 0; j < LINES; ++j) log(Level::Info, "m", {{"k", "one value"}});
      });
    }
  }));
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    ASSERT_EQ(line, "lparams_agent: info: m k=\"one value\"");
  }
  EXPECT_EQ(count, THREADS * LINES);
}

}  // namespace
}  // namespace agent
