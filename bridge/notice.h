// What the agent tells those who watch it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "bridge/named_values.h"
#include "bridge/reason.h"

namespace bridge {

/// A part of what a write has changed. The numbers travel: do not change one.
struct NoticedChange {
  enum Kind : uint8_t {
    Value = 1,        ///< a parameter; `before` is missing if its user is new
    UserAdded = 2,    ///< "USERS[anna]"; what is not at its default follows as values
    UserRemoved = 3,  ///< "USERS[anna]"
    UserOrder = 4,    ///< "USERS": nothing but the order of the users
    LongValue = 5,    ///< a parameter whose values are too long to be told
  };
  Kind kind = Value;
  NamedValue value = {};  ///< `before` and `running` only; a secret has neither

  bool operator==(const NoticedChange&) const = default;
};

/// Agent to client, after the command "watch": something has happened.
struct Notice {
  /// The numbers travel: do not change one.
  enum What : uint8_t {
    Written = 1,           ///< the group, by one write
    WrittenInPart = 2,     ///< the group, by a write that broke off
    Saved = 3,             ///< the settings file was written
    NothingToSave = 4,     ///< a save found the settings file as it has to be
    NotSaved = 5,          ///< a save was refused, or failed
    Refused = 6,           ///< a request to write or to save was
    DegradationBegan = 7,  ///< saves are refused from now on
    DegradationEnded = 8,
    AgentEnds = 9,  ///< the last one
  };
  What what = Written;
  uint64_t time = 0;  ///< UTC, milliseconds since 1970
  uint32_t uid = 0;   ///< of the process that did it, which may be the agent itself
  int32_t pid = 0;
  uint64_t revision = 0;  ///< of the group; 0 if it is about none
  Reason reason = Reason::None;
  uint32_t more = 0;         ///< changes that are not told
  std::string program = {};  ///< the process's name, any bytes
  std::string group = {};    ///< empty if it is about none
  std::string text = {};     ///< why something failed, in words
  std::vector<NoticedChange> changes = {};

  bool operator==(const Notice&) const = default;
};

/// The longest value that a notice tells, and how much all its changes take, in bytes.
inline constexpr size_t MAX_NOTICED_VALUE = 4 * 1024;
inline constexpr size_t MAX_NOTICED_CHANGES = 48 * 1024;

/// The longest text of a notice, in bytes; what is cut off ends with "...".
inline constexpr size_t MAX_NOTICED_TEXT = 4 * 1024;

/// Appends the change as a notice holds it.
void put(std::string& out, const NoticedChange& change);

/// What stands behind the kind of message in a frame.
void put(std::string& out, const Notice& notice);
bool take(std::string_view& bytes, Notice& notice);

}  // namespace bridge
