// What the bridge allows its clients. docs/bridge-protocol.md, Limits, says the same to them.
#pragma once

#include <chrono>
#include <cstddef>

#include "agent/base/quota.h"

namespace agent {

inline constexpr size_t MEBIBYTE = 1024 * 1024;

inline constexpr Quota::Limits SESSION_LIMITS{.all = 256, .others = 240, .oneUser = 128};

/// Bytes of the requests and replies under way, of all sessions together. What goes on with them
/// takes a few times as much for a moment, and all that has to fit a 32-bit address space beside
/// the stacks of the sessions' threads.
inline constexpr Quota::Limits MEMORY_LIMITS{
    .all = 256 * MEBIBYTE, .others = 192 * MEBIBYTE, .oneUser = 96 * MEBIBYTE, .free = 64 * 1024};

/// More frames than this are not kept for a client, and of events not more bytes.
inline constexpr size_t MAX_PENDING = 1000;
inline constexpr size_t MAX_PENDING_EVENTS = MEBIBYTE / 2;

/// A client is disconnected if it takes longer than this to send its hello, to send the rest of a
/// frame that it has begun, or to take more of what the agent sends; that is looked at once a tick.
inline constexpr std::chrono::seconds CLIENT_TIMEOUT{20};
inline constexpr std::chrono::seconds CLOCK_TICK{5};

/// The same while the agent stops. With the tick this is less than a running command gets, so that
/// a client that takes nothing cannot make the stop fail.
inline constexpr std::chrono::seconds CLIENT_TIMEOUT_AT_STOP{5};

}  // namespace agent
