// What the agent's commands "save" and "history" carry: who has saved what, when and why.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "bridge/named_values.h"

namespace bridge {

/// Settings that were saved, as the history tells of them.
struct Revision {
  uint64_t number = 0;       ///< counts from 1; never used twice
  int64_t time = 0;          ///< in milliseconds since 1970, UTC
  uint32_t uid = 0;          ///< of the process that has saved
  int32_t pid = 0;           ///< its process number
  std::string program = {};  ///< what it calls itself
  std::string message = {};  ///< why, in its words; any bytes
  /// What is not as in the revision before: `before` and `running` of each parameter. "USERS[bob]"
  /// with an empty one of the two is a user that was removed or added, with the same one of the two
  /// of each of its parameters behind it; "USERS" with neither is another order of the users.
  std::vector<NamedValue> changes = {};
  uint32_t changesLeftOut = 0;  ///< how many more there are

  bool operator==(const Revision&) const = default;
};

/// The input of "save".
struct SaveRequest {
  bool force = false;        ///< confirms a save that would be refused otherwise
  std::string message = {};  ///< for the history

  bool operator==(const SaveRequest&) const = default;
};

/// Upper limit of a message for the history, in bytes.
inline constexpr size_t MAX_SAVE_MESSAGE = 4096;

std::string encode(const Revision& revision);
std::string encode(const SaveRequest& request);

// Each returns nothing if the bytes are not exactly one of these, or some.
std::optional<Revision> decodeRevision(std::string_view bytes);
std::optional<std::vector<Revision>> decodeRevisions(std::string_view bytes);
std::optional<SaveRequest> decodeSaveRequest(std::string_view bytes);

}  // namespace bridge
