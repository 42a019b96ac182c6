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

TEST(Quoted, EscapesForeignTexts) {
  EXPECT_EQ(quoted(""), R"("")");
  EXPECT_EQ(quoted("say \"no\""), R"("say \"no\"")");
  EXPECT_EQ(quoted("a\nb\xFF"), R"("a\x0ab\xff")");
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
      {"a\\b", R"("a\\b")"}, {"line\nend", R"("line\x0aend")"},
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
