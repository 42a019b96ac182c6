#include <chrono>
#include <functional>
#include <map>
#include <new>
#include <utility>

#include "agent/base/log.h"
#include "agent/base/mutex.h"

namespace agent {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds PAUSE{1};

struct Told {
  Level level;
  Clock::time_point last;
  long long leftOut = 0;  // since then
};

Mutex g_mutex;
// By message, which are literals: as many as there are calls. Never destroyed: threads may log.
std::map<std::string, Told, std::less<>>& g_messages GUARDED_BY(g_mutex) =
    *new std::map<std::string, Told, std::less<>>;

std::string withCount(std::string_view message, long long leftOut) {
  return std::string(message) + " (" + std::to_string(leftOut) + " more since the last line)";
}

}  // namespace

bool logOften(Level level, std::string_view message, std::initializer_list<Field> fields) noexcept
    try {
  const auto now = Clock::now();
  long long leftOut = 0;
  {
    const MutexLock lock(g_mutex);
    const auto found = g_messages.find(message);
    if (found == g_messages.end()) {
      g_messages.emplace(message, Told{level, now});
    } else if (now - found->second.last < PAUSE) {
      ++found->second.leftOut;
      return false;
    } else {
      leftOut = std::exchange(found->second.leftOut, 0);
      found->second.last = now;
    }
  }
  log(level, leftOut == 0 ? std::string(message) : withCount(message, leftOut), fields);
  return true;
} catch (const std::bad_alloc&) {
  log(level, message, fields);
  return true;
}

void logLeftOut(LeftOut which) noexcept try {
  const auto now = Clock::now();
  const MutexLock lock(g_mutex);
  for (auto& [message, told] : g_messages) {
    if (told.leftOut == 0 || (which == LeftOut::Due && now - told.last < PAUSE)) continue;
    log(told.level, withCount(message, told.leftOut));
    told.leftOut = 0;
    told.last = now;
  }
} catch (const std::bad_alloc&) {
  // The next time will tell.
}

}  // namespace agent
