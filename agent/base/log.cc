#include "agent/base/log.h"

#include <algorithm>
#include <array>
#include <new>

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
bool isPlain(std::string_view value) {
  return !value.empty() && std::ranges::all_of(value, isPlainByte);
}

std::string valueOf(const Field& field) {
  if (const auto* number = std::get_if<long long>(&field.value)) return std::to_string(*number);
  const auto text = std::get<std::string_view>(field.value);
  return isPlain(text) ? std::string(text) : text::inQuotes(text);
}

std::string lineOf(Level level, std::string_view message, std::span<const Field> fields) {
  std::string line;
  if (g_journal) line.append("<").append(std::to_string(static_cast<int>(level))).append(">");
  line.append("lparams_agent: ").append(nameOf(level)).append(": ");
  line.append(text::escaped(message));
  for (const Field& field : fields) {
    line.append(" ").append(field.key).append("=").append(valueOf(field));
  }
  line += '\n';
  return line;
}

void write(const std::string& line) {
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

/// REQUIRES: the message has no control characters.
void writeWithoutMemory(Level level, std::string_view message) noexcept {
  std::array<char, 512> line{};
  const std::string_view end = " (no memory for the rest of the line)\n";
  size_t size = 0;
  const auto put = [&](std::string_view text) {
    size += text.copy(line.data() + size, line.size() - size);
  };
  if (g_journal) {
    const char priority = static_cast<char>('0' + static_cast<int>(level));
    put("<");
    put({&priority, 1});
    put(">");
  }
  put("lparams_agent: ");
  put(nameOf(level));
  put(": ");
  put(message.substr(0, line.size() - size - end.size()));
  put(end);
  const MutexLock lock(g_writing);
  if (!writeStandardError({line.data(), size})) ++g_lost;
}

}  // namespace

void logForJournal() { g_journal = true; }

bool logsForJournal() { return g_journal; }

void log(Level level, std::string_view message, std::initializer_list<Field> fields) noexcept {
  log(level, message, std::span(fields.begin(), fields.size()));
}

void log(Level level, std::string_view message, std::span<const Field> fields) noexcept {
  try {
    write(lineOf(level, message, fields));
  } catch (const std::bad_alloc&) {
    writeWithoutMemory(level, message);
  }
}

}  // namespace agent
