// What the agent's command "apply" carries: changes that may have to be confirmed.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "bridge/named_values.h"

namespace bridge {

struct ApplyRequest {
  uint32_t confirmSeconds = 0;  ///< they go back unless confirmed in that time; 0: they stay
  bool save = false;            ///< they are saved, too
  std::string message = {};     ///< for the history
  NamedChanges changes = {};

  bool operator==(const ApplyRequest&) const = default;
};

/// Upper limit of the time to confirm in: a day.
inline constexpr uint32_t MAX_CONFIRM_SECONDS = 86400;

std::string encode(const ApplyRequest& request);

/// Returns nothing if the bytes are not exactly one, or one with too many steps.
std::optional<ApplyRequest> decodeApplyRequest(std::string_view bytes);

}  // namespace bridge
