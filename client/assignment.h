// Assignments of the command line.
#pragma once

#include <optional>
#include <string>

#include "bridge/named_values.h"

namespace client {

/// What is said of a text that is none. The text is not shown: it may be a misspelt secret.
inline constexpr const char* NO_ASSIGNMENT = "an assignment has no \"=\"; write NAME=VALUE";

/// NAME=VALUE as the step of a change, split at the first "="; nothing if there is none.
inline std::optional<bridge::Change> parseAssignment(const std::string& text) {
  const size_t equals = text.find('=');
  if (equals == std::string::npos) return std::nullopt;
  return bridge::Change{bridge::Change::Set, text.substr(0, equals), text.substr(equals + 1)};
}

}  // namespace client
