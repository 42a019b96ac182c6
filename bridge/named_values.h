// What the agent's commands "get" and "set" carry: values of single parameters, by their names.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace bridge {

struct GroupRevision {
  std::string group = {};
  uint64_t revision = 0;

  bool operator==(const GroupRevision&) const = default;
};

/// A parameter and its values, as texts. What it does not have is missing.
struct NamedValue {
  std::string name = {};
  bool secret = false;                        ///< one that the session may not see has no texts
  std::optional<std::string> running = {};    ///< missing if the user is saved but removed
  std::optional<std::string> saved = {};      ///< missing if the user is new, or nothing is saved
  std::optional<std::string> byDefault = {};  ///< always there but for such a secret
  std::optional<std::string> before = {};     ///< a change: of an existing parameter

  bool operator==(const NamedValue&) const = default;
};

/// Appends the value, or takes it off the front of the bytes; false if they are too short.
void put(std::string& out, const NamedValue& value);
bool take(std::string_view& bytes, NamedValue& value);

/// The output of both commands.
struct NamedValues {
  std::vector<GroupRevision> revisions = {};
  std::vector<NamedValue> values = {};

  bool operator==(const NamedValues&) const = default;
};

/// A step of a change. The numbers travel: do not change one.
struct Change {
  enum Kind : uint8_t {
    Set = 1,         ///< the parameter takes the value
    AddUser = 2,     ///< appends a user at the defaults; `name` is the user's
    RemoveUser = 3,  ///< `name` is the user's
  };
  Kind kind = Set;
  std::string name = {};
  std::string value = {};

  bool operator==(const Change&) const = default;
};

/// The input of "set".
struct NamedChanges {
  std::vector<GroupRevision> revisions = {};  ///< that the groups must have
  std::vector<Change> changes = {};

  bool operator==(const NamedChanges&) const = default;
};

/// The input of "get".
using Names = std::vector<std::string>;

/// Upper limit of the names, and of the steps, of one request: every field of 10,000 users.
inline constexpr size_t MAX_NAMED_ITEMS = 131072;

std::string encode(const Names& names);
std::string encode(const NamedValues& values);
std::string encode(const NamedChanges& changes);

// Each returns nothing if the bytes are not exactly one of these; a request also if it has too many
// items.
std::optional<Names> decodeNames(std::string_view bytes);
std::optional<NamedValues> decodeNamedValues(std::string_view bytes);
std::optional<NamedChanges> decodeNamedChanges(std::string_view bytes);

}  // namespace bridge
