#include "agent/base/log.h"

#include <algorithm>

#include "agent/base/mutex.h"
#include "agent/base/standard_error.h"
#include "text/escape.h"

namespace agent {
namespace {

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
  return !value.empty() && std::ranges::all_of(value, isPlainByte);
}

std::string lineOf(Level level, std::string_view message, std::span<const Field> fields) {
  std::string line;
  if (g_journal) line.append("<").append(std::to_string(static_cast<int>(level))).append(">");
  line.append("lparams_agent: ").append(nameOf(level)).append(": ");
  line.append(text::escaped(message));
  for (const Field& field : fields) {
    line.append(" ").append(field.key).append("=");
    line.append(isPlain(field.value) ? field.value : text::inQuotes(field.value));
  }
  line += '\n';
  return line;
}

}  // namespace

std::string shortened(std::string_view foreign, size_t limit) {
  if (foreign.size() <= limit) return std::string(foreign);
  return std::string(foreign.substr(0, limit)) + "...";
}

std::string quoted(std::string_view foreign) { return text::inQuotes(shortened(foreign)); }

void logForJournal() { g_journal = true; }

bool logsForJournal() { return g_journal; }

void log(Level level, std::string_view message, std::initializer_list<Field> fields) {
  log(level, message, std::span(fields.begin(), fields.size()));
}

void log(Level level, std::string_view message, std::span<const Field> fields) {
  const std::string line = lineOf(level, message, fields);
  const MutexLock lock(g_writing);
  if (g_lost != 0) {
    const Field lines("lines", g_lost);
    const std::string lost =
        lineOf(Level::Warning, "nobody read the log, and lines were lost", std::span(&lines, 1));
    if (!writeStandardError(lost)) {
      ++g_lost;
      return;
    }
    g_lost = 0;
  }
  if (!writeStandardError(line)) ++g_lost;
}

}  // namespace agent
