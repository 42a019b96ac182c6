// The agent's log: one plain line per event on the standard error stream.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "text/shortened.h"

namespace agent {

/// The numbers are the priorities of syslog(3).
enum class Level { Error = 3, Warning = 4, Notice = 5, Info = 6 };

/// A key and its value, written as key=value behind the message. The value is shown whole: one that
/// comes from a file or a client goes through shortened() first. It refers to the text and copies
/// nothing.
struct Field {
  Field(std::string_view key, std::string_view value) : key(key), value(value) {}
  Field(std::string_view key, long long value) : key(key), value(value) {}

  std::string_view key;
  std::variant<std::string_view, long long> value;
};

/// Makes every line begin with its priority as the journal reads it, "<4>" (sd-daemon(3)). Call
/// before the first thread starts.
void logForJournal();
bool logsForJournal();

/// Writes one line, with control characters as text::escaped() has them. Never waits: lines that
/// nobody reads are lost, and the next one that is read says how many they were. If there is no
/// memory for the line, the message is written without the fields. Thread-safe.
void log(Level level, std::string_view message, std::initializer_list<Field> fields = {}) noexcept;

/// The same with fields that are not known beforehand.
void log(Level level, std::string_view message, std::span<const Field> fields) noexcept;

/// The same for what clients can cause as often as they like: one line of a message in a second,
/// which says how many were left out since the one before. False if this one was.
bool logOften(Level level, std::string_view message,
              std::initializer_list<Field> fields = {}) noexcept;

enum class LeftOut {
  Due,  ///< for a second
  All,
};

/// Says for each message of logOften() how many were left out since its last line, if there were
/// any: of those that are due once a second, of all at the end.
void logLeftOut(LeftOut which) noexcept;

using text::quoted;
using text::shortened;

}  // namespace agent
