#include "agent/base/own_user.h"

#include <unistd.h>

#include <cstdint>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

namespace agent {
namespace {

constexpr id_t DEFAULT_OVERFLOW = 65534;  // the kernel's, where it cannot be asked
constexpr uint64_t ALL = UINT32_MAX;      // the highest number is none: it means "no change"

/// The number that stands for several; nothing stands for several if it is not `shared`.
struct Overflow {
  id_t number;
  bool shared;
};

Overflow overflowOf(const std::string& numberFile, const std::string& mapFile) {
  Overflow overflow{DEFAULT_OVERFLOW, true};
  if (id_t number = 0; std::ifstream(numberFile) >> number) overflow.number = number;
  std::ifstream map(mapFile);
  overflow.shared = !coversAll(std::string(std::istreambuf_iterator(map), {}));
  return overflow;
}

bool isKnown(const Overflow& overflow, id_t number) {
  return !overflow.shared || number != overflow.number;
}

}  // namespace

bool coversAll(std::string_view idMap) {
  std::istringstream lines{std::string(idMap)};
  uint64_t inside = 0;
  uint64_t outside = 0;
  uint64_t count = 0;
  uint64_t covered = 0;
  while (lines >> inside >> outside >> count) covered += count;  // ranges do not overlap
  return covered >= ALL;
}

bool isKnownUser(uid_t user) {
  static const Overflow overflow = overflowOf("/proc/sys/kernel/overflowuid", "/proc/self/uid_map");
  return isKnown(overflow, user);
}

bool isKnownGroup(gid_t group) {
  static const Overflow overflow = overflowOf("/proc/sys/kernel/overflowgid", "/proc/self/gid_map");
  return isKnown(overflow, group);
}

bool isOwnUser(uid_t user) { return user == ::geteuid() && isKnownUser(user); }

}  // namespace agent
