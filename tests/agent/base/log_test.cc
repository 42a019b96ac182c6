#include "agent/base/log.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <functional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "tests/module/failing_allocation.h"

using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

namespace agent {
namespace {

std::string written(const std::function<void()>& action) {
  CaptureStderr();
  action();
  return GetCapturedStderr();
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

TEST(Log, ShowsItsOwnTextsWhole) {
  const std::string text(100'000, 'x');
  EXPECT_EQ(written([&] {
              log(Level::Info, text, {{"reason", text}, {"words", text + " y"}});
            }),
            "lparams_agent: info: " + text + " reason=" + text + " words=\"" + text + " y\"\n");
}

TEST(Log, ShowsControlCharactersOfAMessageAsNumbers) {
  EXPECT_EQ(written([] {
              log(Level::Error, "state directory /a\n\x9B\xC2\x9B\xE2\x80\xAE cannot be used");
            }),
            "lparams_agent: error: state directory /a\\x0a\\x9b\\xc2\\x9b\\xe2\\x80\\xae cannot be "
            "used\n");
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

/// Standard error is a pipe that nobody reads while this lives.
class UnreadPipe {
 public:
  UnreadPipe() {
    (void)!::pipe2(ends_, O_CLOEXEC);
    (void)::dup2(ends_[1], STDERR_FILENO);
  }
  ~UnreadPipe() {
    (void)::dup2(before_, STDERR_FILENO);
    for (const int file : {before_, ends_[0], ends_[1]}) (void)::close(file);
  }
  UnreadPipe(const UnreadPipe&) = delete;
  UnreadPipe& operator=(const UnreadPipe&) = delete;

  /// Takes all that is in it.
  std::string read() const {
    std::string text(1 << 20, '\0');
    (void)::fcntl(ends_[0], F_SETFL, O_NONBLOCK);
    const ssize_t size = ::read(ends_[0], text.data(), text.size());
    text.resize(size > 0 ? static_cast<size_t>(size) : 0);
    return text;
  }

 private:
  const int before_ = ::dup(STDERR_FILENO);
  int ends_[2] = {-1, -1};
};

size_t linesIn(const std::string& text) {
  return static_cast<size_t>(std::count(text.begin(), text.end(), '\n'));
}

TEST(Log, NeverWaitsForAReaderAndTellsWhatWasLost) {
  const UnreadPipe pipe;
  constexpr size_t LINES = 5000;  // more than a pipe holds
  for (size_t i = 0; i < LINES; ++i) log(Level::Info, std::string(100, 'x'));
  const std::string first = pipe.read();
  const size_t taken = linesIn(first);
  EXPECT_GT(taken, 0u);
  EXPECT_LT(taken, LINES);
  log(Level::Info, "read again");
  EXPECT_EQ(pipe.read(), "lparams_agent: warning: nobody read the log, and lines were lost lines=" +
                             std::to_string(LINES - taken) + "\nlparams_agent: info: read again\n");
}

TEST(Log, NeverWaitsForASocketEither) {
  int ends[2];
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
  const int before = ::dup(STDERR_FILENO);
  (void)::dup2(ends[1], STDERR_FILENO);
  for (int i = 0; i < 100'000; ++i) log(Level::Info, std::string(100, 'x'));
  (void)::close(ends[0]);
  log(Level::Info, "to nobody");
  (void)::dup2(before, STDERR_FILENO);
  for (const int file : {before, ends[1]}) (void)::close(file);
}

TEST(Log, WritesEachLineToASocketOnce) {
  int ends[2];
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
  const int before = ::dup(STDERR_FILENO);
  (void)::dup2(ends[1], STDERR_FILENO);
  errno = ENOTSOCK;  // of an earlier call
  log(Level::Info, "one");
  log(Level::Info, "two");
  (void)::dup2(before, STDERR_FILENO);
  char bytes[1000];
  const ssize_t size = ::recv(ends[0], bytes, sizeof bytes, MSG_DONTWAIT);
  for (const int file : {before, ends[0], ends[1]}) (void)::close(file);
  EXPECT_EQ(std::string(bytes, static_cast<size_t>(std::max<ssize_t>(size, 0))),
            "lparams_agent: info: one\nlparams_agent: info: two\n");
}

TEST(Log, WritesAMessageWithoutItsFieldsWhereThereIsNoMemory) {
  const std::string line = "lparams_agent: error: it failed (no memory for the rest of the line)\n";
  EXPECT_EQ(written([] {
              host::failAllocation(1);
              log(Level::Error, "it failed", {{"key", "value"}});
            }),
            line);
  logForJournal();
  EXPECT_EQ(written([] {
              host::failAllocation(1);
              log(Level::Error, "it failed", {{"key", "value"}});
            }),
            "<3>" + line);
}

TEST(Log, TellsWhatItCannotCountForWantOfMemory) {
  EXPECT_EQ(written([] {
              host::failAllocation(1);
              EXPECT_TRUE(logOften(Level::Error, "it failed", {{"key", "value"}}));
            }),
            "lparams_agent: error: it failed key=value\n");
}

TEST(Log, WhatIsCausedOftenIsToldOnceASecondWithACount) {
  const std::string first = written([] {
    for (int i = 0; i < 1000; ++i) logOften(Level::Warning, "it came", {{"number", i}});
    logOften(Level::Warning, "something else");
  });
  EXPECT_THAT(first, StartsWith("lparams_agent: warning: it came number=0\n"));
  EXPECT_THAT(first, HasSubstr("lparams_agent: warning: something else\n"));
  EXPECT_LT(linesIn(first), 1000u);
  std::string later;
  while (later.find("more") == std::string::npos)
    later = written([] { logOften(Level::Warning, "it came"); });
  EXPECT_THAT(later, MatchesRegex("lparams_agent: warning: it came \\([0-9]+ more since the last "
                                  "line\\)\n"));
}

TEST(Log, WhatWasLeftOutIsToldInTheEndOrWhenItIsDue) {
  const std::string sum =
      "lparams_agent: notice: it came again \\([0-9]+ more since the last line\\)\n";
  for (const LeftOut which : {LeftOut::All, LeftOut::Due}) {
    std::string told;
    while (told.empty()) {
      logOften(Level::Notice, "it came again", {{"key", "value"}});
      told = written([&] { logLeftOut(which); });
    }
    EXPECT_THAT(told, MatchesRegex(sum));
    EXPECT_EQ(written([&] { logLeftOut(which); }), "");
  }
}

}  // namespace
}  // namespace agent
