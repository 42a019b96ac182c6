#include "agent/base/log.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <map>
#include <utility>

#include "agent/base/mutex.h"
#include "agent/base/standard_error.h"
#include "text/escape.h"

namespace agent {
namespace {

constexpr size_t MAX_QUOTED = 200;  // bytes of a foreign text that a line shows

const char* nameOf(Level level) {
  switch (level) {
    case Level::Error:
      return "error";
    case Level::Warning:
      return "warning";
    case Level::Notice:
      return "notice";
    case Level::Info:
      return "info";
  }
  return "?";
}

bool g_journal = false;

Mutex g_writing;                             // protects the stream too
long long g_lost GUARDED_BY(g_writing) = 0;  // lines

bool isPlainByte(char c) { return c > ' ' && c < '\x7f' && c != '"' && c != '\\' && c != '='; }

/// A value that needs no quotes.
bool isPlain(const std::string& value) {
  return !value.empty() && value.size() <= MAX_QUOTED && std::ranges::all_of(value, isPlainByte);
}

std::string lineOf(Level level, std::string_view message, std::initializer_list<Field> fields) {
  std::string line;
  if (g_journal) line.append("<").append(std::to_string(static_cast<int>(level))).append(">");
  line.append("lparams_agent: ").append(nameOf(level)).append(": ").append(message);
  for (const Field& field : fields) {
    line.append(" ").append(field.key).append("=");
    line.append(isPlain(field.value) ? field.value : quoted(field.value));
  }
  line += '\n';
  return line;
}

}  // namespace

std::string quoted(std::string_view foreign) {
  std::string out = text::inQuotes(foreign.substr(0, MAX_QUOTED));
  if (foreign.size() > MAX_QUOTED) out.insert(out.size() - 1, "...");
  return out;
}

void logForJournal() { g_journal = true; }

void log(Level level, std::string_view message, std::initializer_list<Field> fields) {
  const std::string line = lineOf(level, message, fields);
  const MutexLock lock(g_writing);
  if (g_lost != 0) {
    const std::string lost =
        lineOf(Level::Warning, "nobody read the log, and lines were lost", {{"lines", g_lost}});
    if (!writeStandardError(lost)) {
      ++g_lost;
      return;
    }
    g_lost = 0;
  }
  if (!writeStandardError(line)) ++g_lost;
}

void logOften(Level level, std::string_view message, std::initializer_list<Field> fields) {
  using Clock = std::chrono::steady_clock;
  struct Last {
    Clock::time_point line;
    long long leftOut = 0;
  };
  static Mutex mutex;                                        // protects the next one
  static std::map<std::string, Last, std::less<>> messages;  // literals: as many as there are calls

  long long leftOut = 0;
  {
    const MutexLock lock(mutex);
    const auto now = Clock::now();
    const auto found = messages.find(message);
    if (found == messages.end()) {
      messages.emplace(message, Last{now});
    } else if (now - found->second.line < std::chrono::seconds(1)) {
      ++found->second.leftOut;
      return;
    } else {
      leftOut = std::exchange(found->second.leftOut, 0);
      found->second.line = now;
    }
  }
  if (leftOut == 0) return log(level, message, fields);
  log(level, std::string(message) + " (" + std::to_string(leftOut) + " more since the last line)",
      fields);
}

}  // namespace agent
