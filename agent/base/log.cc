#include "agent/base/log.h"

#include <unistd.h>

#include <algorithm>

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

bool isPlainByte(char c) { return c > ' ' && c < '\x7f' && c != '"' && c != '\\' && c != '='; }

/// A value that needs no quotes.
bool isPlain(const std::string& value) {
  return !value.empty() && value.size() <= MAX_QUOTED && std::ranges::all_of(value, isPlainByte);
}

}  // namespace

std::string quoted(std::string_view foreign) {
  std::string out = text::inQuotes(foreign.substr(0, MAX_QUOTED));
  if (foreign.size() > MAX_QUOTED) out.insert(out.size() - 1, "...");
  return out;
}

void logForJournal() { g_journal = true; }

void log(Level level, std::string_view message, std::initializer_list<Field> fields) {
  std::string line;
  if (g_journal) line.append("<").append(std::to_string(static_cast<int>(level))).append(">");
  line.append("lparams_agent: ").append(nameOf(level)).append(": ").append(message);
  for (const Field& field : fields) {
    line.append(" ").append(field.key).append("=");
    line.append(isPlain(field.value) ? field.value : quoted(field.value));
  }
  line += '\n';
  (void)!::write(STDERR_FILENO, line.data(), line.size());
}

}  // namespace agent
